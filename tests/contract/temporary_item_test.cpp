#include "quoll/linux/posix/temporary_item.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "quoll/linux/posix/files.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

namespace fs = std::filesystem;

class TemporaryItem : public ::testing::Test {
 protected:
  TemporaryItem() {
    fs::create_directories(staging_);
    ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path("containers").c_str(), 1);
  }
  ~TemporaryItem() override { ::unsetenv("QUOLL_GROUP_CONTAINERS"); }

  static bool write_atomically(const std::string& path) {
    return !posix::make_file_manager()->writeToFile({'a'}, path, platform::NSDataWritingAtomic);
  }

  test::TemporaryFolder folder_;
  const std::string container_ = folder_.path("containers/group");
  const std::string staging_ = container_ + "/SharedData/Share";
  const std::string incoming_ = container_ + "/.incoming";
};

TEST_F(TemporaryItem, AFileOfTheUserIsNeverTakenForOne) {
  for (const std::string& beside : {staging_, folder_.path()}) {
    const std::string notes = beside + "/.quoll-incoming-notes";
    fs::create_directory(notes);
    EXPECT_TRUE(write_atomically(beside + "/image.png"));
    posix::sweep_temporary_items(container_);
    EXPECT_TRUE(fs::exists(notes));
    EXPECT_TRUE(fs::exists(beside + "/image.png"));
  }
}

TEST_F(TemporaryItem, AnAtomicWriteInAContainerIsMadeOutOfSight) {
  EXPECT_TRUE(write_atomically(staging_ + "/x"));
  EXPECT_TRUE(fs::is_empty(incoming_)) << "it was there, and it was left empty";
  fs::remove(incoming_);
  EXPECT_TRUE(write_atomically(folder_.path("x")));
  EXPECT_FALSE(fs::exists(incoming_)) << "another place has nothing to do with the container";
}

TEST_F(TemporaryItem, AFolderIsThereForOnesOwnUseAndGoesWithAllThatIsInIt) {
  std::string path;
  {
    posix::TemporaryItem item(posix::open_folder_for_building(container_));
    ASSERT_EQ(item.make_folder(), 0);
    path = item.path();
    EXPECT_EQ(fs::path(path).parent_path(), incoming_);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
    fs::create_directories(path + "/1/deep");
    EXPECT_TRUE(write_atomically(path + "/1/name"));
    posix::sweep_temporary_items(container_);
    EXPECT_TRUE(fs::exists(path + "/1/name")) << "it is in use";
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(TemporaryItem, WhatAKilledProcessLeftIsSwept) {
  const pid_t child = ::fork();
  if (child == 0) {
    posix::TemporaryItem folder(posix::open_folder_for_building(container_));
    posix::TemporaryItem file(posix::open_folder_for_building(container_));
    if (folder.make_folder() != 0 || file.make_file(0600) != 0) {
      ::_exit(1);
    }
    fs::create_directories(folder.path() + "/deep");
    ::raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  const fs::directory_iterator left(incoming_);
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
  posix::sweep_temporary_items(container_);
  EXPECT_TRUE(fs::is_empty(incoming_));
}

TEST_F(TemporaryItem, OnlyWhatIsOursAndUnlockedIsSwept) {
  fs::create_directories(incoming_ + "/.quoll-incoming-live");
  fs::create_directories(incoming_ + "/another");
  const posix::UniqueFd held(
      ::open((incoming_ + "/.quoll-incoming-live").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(::flock(held.get(), LOCK_EX | LOCK_NB), 0);
  posix::sweep_temporary_items(container_);
  EXPECT_TRUE(fs::exists(incoming_ + "/.quoll-incoming-live"));
  EXPECT_TRUE(fs::exists(incoming_ + "/another"));
}

TEST_F(TemporaryItem, SweepingMakesNothing) {
  posix::sweep_temporary_items(container_);
  posix::sweep_temporary_items(folder_.path("nowhere"));
  EXPECT_FALSE(fs::exists(incoming_));
  EXPECT_FALSE(fs::exists(folder_.path("nowhere")));
}

TEST_F(TemporaryItem, ALinkInPlaceOfTheFolderIsNotFollowed) {
  fs::create_directories(folder_.path("elsewhere/.quoll-incoming-1"));
  fs::create_directory_symlink(folder_.path("elsewhere"), incoming_);
  posix::sweep_temporary_items(container_);
  EXPECT_TRUE(fs::exists(folder_.path("elsewhere/.quoll-incoming-1")));
  EXPECT_TRUE(write_atomically(staging_ + "/x")) << "made beside it then";
}

}  // namespace
}  // namespace quoll
