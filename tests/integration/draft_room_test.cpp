// What becomes of drafts when the disk is full, and when their files change.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>

#include <csignal>
#include <cstdlib>
#include <limits>

#include "tests/integration/waiting_drafts.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;

using DraftsThatChange = WaitingDrafts;

TEST_F(DraftsThatChange, AFileThatShrankIsNotAttached) {
  add_waiting("20200101-000000", "quoll://compose?subject=x", "content");
  fs::resize_file(taken_file("20200101-000000/files/0/file"), 3);
  EXPECT_EQ(home_.compose({"--resume"}).status, 1);
  EXPECT_TRUE(home_.drafts().empty());
  EXPECT_TRUE(holds(listed(), "a file has changed since it was taken")) << listed();
}

TEST_F(DraftsThatChange, WhatCannotBeReadIsSaid) {
  add_waiting("20200101-000000", "quoll://compose?subject=x");
  fs::create_directories(taken_file("20200101-000000/left-out"));
  const auto ended = home_.compose({"--resume"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(
      holds(ended.output, "Left out: other files: their names cannot be read: Is a directory\n"))
      << ended.output;
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(DraftsThatChange, AFolderThatIsNoneIsSaid) {
  ASSERT_EQ(home_.compose({"quoll://compose?subject=x"}).status, 0);
  const fs::path drafts = fs::path(home_.taken_folder()).parent_path() / "drafts";
  for (const fs::path& folder : {fs::path(home_.taken_folder()), drafts}) {
    for (const bool is_link : {false, true}) {
      const fs::path aside = folder.string() + ".aside";
      fs::rename(folder, aside);
      is_link ? fs::create_symlink("/nowhere", folder) : void(std::ofstream(folder) << "x");
      const auto list = home_.compose({"--list"});
      EXPECT_EQ(list.status, 1);
      EXPECT_EQ(list.errors, "quoll-compose: the folder " + folder.string() + " cannot be read: " +
                                 (is_link ? "no such file or directory" : "not a directory") +
                                 "\n");
      const auto refused = home_.compose({"quoll://compose?"});
      EXPECT_EQ(refused.status, 1);
      EXPECT_EQ(refused.errors, "quoll-compose: " + folder.string() +
                                    " is no folder, or a link to none; move it away\n");
      fs::remove(folder);
      fs::rename(aside, folder);
    }
  }
  EXPECT_EQ(home_.drafts().size(), 1U);
}

/// The receiver's folder on a small disk of its own.
class DraftsOnASmallDisk : public WaitingDrafts {
 protected:
  void SetUp() override {
    fs::create_directories(home_.bus.data_home());
    is_mounted_ = size_is("2m", 0);
    if (!is_mounted_) {
      const char* ci = std::getenv("CI");
      ASSERT_STRNE(ci, "true") << "a small file system must be mounted where everything is tested";
      GTEST_SKIP() << "only root can mount a small file system";
    }
  }
  ~DraftsOnASmallDisk() override {
    if (is_mounted_) {
      umount2(home_.bus.data_home().c_str(), MNT_DETACH);
    }
  }
  [[nodiscard]] bool size_is(const std::string& size, unsigned long flags) const {
    return mount("quoll-test", home_.bus.data_home().c_str(), "tmpfs", flags,
                 ("size=" + size).c_str()) == 0;
  }
  /// Its file has this size and takes no room, but its message file will.
  void add_large_waiting(const std::string& name, std::uintmax_t size) const {
    add_waiting(name, "quoll://compose?subject=large", "x");
    fs::resize_file(taken_file(name + "/files/0/file"), size);
    note_size(name, size);
  }

  /// Leaves room for half of the disk.
  void fill() const {
    std::ofstream(home_.bus.data_home() + "/other") << std::string(1'000'000, 'x');
  }

  bool is_mounted_ = false;
};

TEST_F(DraftsOnASmallDisk, RoomIsCountedOverAllThatWaits) {
  const std::string path = home_.stage("a", std::string(300'000, 'x'));
  add_large_waiting("20200101-000000", 1'400'000);
  const posix::UniqueFd worked_on(
      ::open(taken_file("20200101-000000").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(worked_on.get(), LOCK_EX), 0);
  const auto refused = home_.compose({ReceiverHome::url({path})});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(holds(refused.errors, "there is no room for the draft")) << refused.errors;
  EXPECT_EQ(home_.taken().size(), 1U);
  fs::remove_all(taken_file("20200101-000000"));
  EXPECT_EQ(home_.compose({ReceiverHome::url({path})}).status, 0) << "alone it has room";
}

TEST_F(DraftsOnASmallDisk, WhoAsksIsToldWhatATakenDraftWouldBeTold) {
  EXPECT_EQ(home_.compose({"--check"}).status, 0);
  add_large_waiting("20200101-000000", 1'500'000);
  const auto refused = home_.compose({"--check"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(holds(refused.errors, "there is no room for the draft: 2.1 MB are needed in ") &&
              holds(refused.errors, "; make room on its disk\n"))
      << refused.errors;
}

TEST_F(DraftsOnASmallDisk, SizesWithoutASumNeedMoreThanThereIs) {
  constexpr std::uint64_t kFirst = (std::uint64_t{1} << 63U) - 4096;
  constexpr std::uint64_t kLeft =
      std::numeric_limits<std::uint64_t>::max() - (kFirst / 57 * 78 + 1024);
  // On the same disk, on which files may be so long.
  fs::rename(home_.bus.path("containers"), home_.bus.path("before"));
  fs::create_directories(home_.bus.data_home() + "/containers");
  fs::create_directory_symlink(home_.bus.data_home() + "/containers", home_.bus.path("containers"));
  fs::create_directories(home_.staging());
  const Words paths{home_.stage("a", ""), home_.stage("b", "")};
  fs::resize_file(paths[0], kFirst);
  fs::resize_file(paths[1], kLeft / 78 * 57 + 57);
  const auto refused = home_.compose({ReceiverHome::url(paths)});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(holds(refused.errors, "there is no room for the draft")) << refused.errors;
}

// A share that was taken over may keep a file open when it was taken.
TEST_F(DraftsOnASmallDisk, AFileThatGrowsAfterwardsHoldsUpNoOther) {
  add_waiting("20200101-000000", "quoll://compose?subject=grown", "x");
  fs::resize_file(taken_file("20200101-000000/files/0/file"), std::uintmax_t{1} << 40U);
  const posix::UniqueFd worked_on(
      ::open(taken_file("20200101-000000").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(worked_on.get(), LOCK_EX), 0);
  EXPECT_EQ(home_.compose({"quoll://compose?subject=next"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 1U);
  flock(worked_on.get(), LOCK_UN);
  EXPECT_EQ(home_.compose({"--resume"}).status, 1);
  EXPECT_EQ(home_.drafts().size(), 1U) << "nothing of it was written";
  EXPECT_TRUE(holds(listed(),
                    "  set aside: the draft cannot be written: a file has changed since it was "
                    "taken  "))
      << listed();
}

TEST_F(DraftsOnASmallDisk, WhatIsLargerThanTheDiskIsSetAsideAtOnce) {
  add_large_waiting("20200101-000000", 4'000'000);
  EXPECT_EQ(home_.compose({"quoll://compose?subject=next"}).status, 0)
      << "the large one is another's";
  EXPECT_EQ(home_.drafts().size(), 1U);
  EXPECT_TRUE(holds(listed(), "  set aside: it needs 5.5 MB, which is more than the whole"))
      << listed();
  EXPECT_EQ(home_.compose({"quoll://compose?subject=next"}).status, 0);
}

TEST_F(DraftsOnASmallDisk, WhatHasNoRoomWaitsWithItsFiles) {
  fill();
  add_large_waiting("20200101-000000", 1'200'000);
  add_large_waiting("20200101-000001", 1'300'000);
  add_waiting("20200101-000002", "quoll://compose?subject=small");
  for (int times = 0; times < 4; ++times) {
    const auto ended = home_.compose({"--resume"});
    EXPECT_EQ(ended.status, 1);
    for (const char* const name : {"20200101-000000", "20200101-000001"}) {
      EXPECT_TRUE(holds(ended.output, "Draft: " + taken_file(name) + "\nThe draft " + name +
                                          " waits: there is no room for the draft.\n"))
          << ended.output;
    }
  }
  EXPECT_EQ(home_.drafts().size(), 1U) << "the small one is written, and nothing half";
  EXPECT_EQ(fs::file_size(taken_file("20200101-000000/files/0/file")), 1'200'000U);
  EXPECT_FALSE(holds(listed(), "set aside")) << listed();
  ASSERT_TRUE(size_is("64m", MS_REMOUNT));
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 3U);
  EXPECT_TRUE(home_.taken().empty());
}

TEST_F(DraftsOnASmallDisk, ThatDraftsWaitIsSaidOnce) {
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  for (const char* name : {"20200101-000000", "20200101-000001", "20200101-000002"}) {
    add_large_waiting(name, 1'200'000);
  }
  fill();
  choose("claws-mail", "X");
  EXPECT_EQ(compose({"--resume"}).status, 1);
  EXPECT_EQ(compose({"quoll://send"}).status, 1);
  EXPECT_EQ(desktop.read_line(), "A draft waits|there is no room for the draft.");
  for (int line = 0; line < 2; ++line) {
    static_cast<void>(desktop.read_line());
  }
  EXPECT_TRUE(desktop.read_line().starts_with("There is no draft|"));
}

using UsersFileLimit = WaitingDrafts;

TEST_F(UsersFileLimit, IsSaidAndNothingIsSetAside) {
  const auto limited = [&](const std::string& argument) {
    return run({"bash", "-c", "ulimit -f 4; exec \"$0\" \"$1\"", QUOLL_COMPOSE, argument},
               home_.bus.environment());
  };
  const auto refused = limited("quoll://compose?subject=" + std::string(5000, 'a'));
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.errors, "quoll-compose: the draft cannot be taken into " +
                                home_.taken_folder() + ": file too large\n");
  EXPECT_TRUE(home_.taken().empty());
  add_waiting("20200101-000000", "quoll://compose?subject=x", std::string(5000, 'a'));
  for (int times = 0; times < 4; ++times) {
    const auto waits = limited("--resume");
    EXPECT_EQ(waits.status, 1);
    EXPECT_EQ(waits.output, "Draft: " + taken_file("20200101-000000") +
                                "\nThe draft 20200101-000000 waits: it needs a larger file than "
                                "the user may have (ulimit -f).\n");
  }
  EXPECT_TRUE(holds(listed(),
                    "  waiting: it needs a larger file than the user may have (ulimit -f)"
                    "  " +
                        taken_file("20200101-000000\n")))
      << listed();
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(UsersFileLimit, OfAClientEndsItAsEver) {
  choose("thunderbird", "X", "grep SigIgn /proc/self/status > '" + home_.bus.path("ignored") + "'");
  EXPECT_EQ(home_.compose({"quoll://compose?subject=x"}).status, 0);
  const std::string ignored = read_file(home_.bus.path("ignored"));
  ASSERT_TRUE(ignored.starts_with("SigIgn:")) << ignored;
  EXPECT_EQ(std::stoull(ignored.substr(7), nullptr, 16) >> (SIGXFSZ - 1U) & 1U, 0U) << ignored;
}

}  // namespace
}  // namespace quoll::test
