// What the receiver takes of the staging folder, and that it changes nothing there.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;

class Taking : public testing::Test {
 protected:
  [[nodiscard]] std::string containers(const std::string& inside) const {
    return home_.bus.path("containers/" + inside);
  }
  /// Moves a folder of the container away and puts a link in its place that leads to it.
  void replace_by_link(const std::string& folder) const {
    fs::rename(containers(folder), home_.bus.path("moved"));
    fs::create_directory_symlink(home_.bus.path("moved"), containers(folder));
  }
  /// Whether a file in the staging folder comes into a draft.
  [[nodiscard]] bool is_taken(const std::string& path) const {
    const auto ended = home_.compose({ReceiverHome::url({path})});
    EXPECT_EQ(holds(ended.output, "Left out: " + path), !holds(ended.output, "Attachments: 1\n"))
        << ended.output << ended.errors;
    return holds(ended.output, "Attachments: 1\n");
  }

  ReceiverHome home_;
};

// A share that was taken over cannot open what lies outside the container, but it can make links
// inside, and the receiver is not confined.
TEST_F(Taking, NoFolderFromTheContainerDownIsALink) {
  for (const std::string folder :
       {"K7Q2M9XT4B.quoll/SharedData/Share", "K7Q2M9XT4B.quoll/SharedData", "K7Q2M9XT4B.quoll"}) {
    const std::string path = home_.stage("id_rsa", "secret");
    EXPECT_TRUE(is_taken(path)) << folder;
    replace_by_link(folder);
    EXPECT_FALSE(is_taken(path)) << folder;
    fs::remove(containers(folder));
    fs::rename(home_.bus.path("moved"), containers(folder));
  }
}

TEST_F(Taking, AContainerBehindALinkIsTheUsersOwnChoice) {
  const std::string path = home_.stage("a", "x");
  fs::rename(home_.bus.path("containers"), home_.bus.path("large-disk"));
  fs::create_directory_symlink(home_.bus.path("large-disk"), home_.bus.path("containers"));
  EXPECT_TRUE(is_taken(path));
}

TEST_F(Taking, AFileOfAnotherUserIsLeftOut) {
  const std::string path = home_.stage("theirs", "x");
  if (chown(path.c_str(), 12345, static_cast<gid_t>(-1)) != 0) {
    const char* ci = std::getenv("CI");
    ASSERT_STRNE(ci, "true") << "it has to be tested where everything is tested";
    GTEST_SKIP() << "only root can give a file away";
  }
  const auto ended = home_.compose({ReceiverHome::url({path})});
  EXPECT_TRUE(holds(ended.output, "Left out: " + path + ": it belongs to another user\n"))
      << ended.output;
  EXPECT_FALSE(holds(home_.read_only_draft(), "theirs\""));
}

TEST_F(Taking, AFileThatIsNamedOftenIsAttachedOnce) {
  const std::string path = home_.stage("large", std::string(100'000, 'x'));
  fs::create_hard_link(path, home_.staging() + "/again");
  std::vector<std::string> paths(16, path);
  paths.push_back(home_.staging() + "/../Share/large");
  paths.push_back(home_.staging() + "/again");
  const auto ended = home_.compose({ReceiverHome::url(paths)});
  EXPECT_TRUE(holds(ended.output, "Attachments: 1\n")) << ended.output;
  ASSERT_EQ(home_.drafts().size(), 1U);
  EXPECT_LT(fs::file_size(home_.drafts().front()), 150'000U);
}

class TakingForAClient : public MailClientTest {};

TEST_F(TakingForAClient, TheUsersOwnFileKeepsItsModeAndItsName) {
  const std::string own = home_.bus.path("home/own");
  std::ofstream(own) << "x";
  ASSERT_EQ(chmod(own.c_str(), 0444), 0);
  const std::string staged = home_.staging() + "/it's a\nname";
  fs::create_hard_link(own, staged);
  choose("claws-mail", "X");
  EXPECT_EQ(compose({ReceiverHome::url({staged})}).status, 0);
  const Words words = given();
  struct stat status {};
  ASSERT_EQ(stat(own.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0444U);
  struct stat attached {};
  ASSERT_EQ(stat(words.back().c_str(), &attached), 0) << words.back();
  EXPECT_EQ(attached.st_ino, status.st_ino) << "it takes no room";
  EXPECT_TRUE(fs::exists(staged));
}

TEST_F(TakingForAClient, AClientOfMessageFilesNeedsNoOthers) {
  choose("thunderbird", "X");
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a", "x")})}).status, 0);
  EXPECT_TRUE(is_marked());
  EXPECT_FALSE(fs::exists(given_folder() + "/files"));
}

}  // namespace
}  // namespace quoll::test
