#include "apps/share/staging_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/platform/desktop.h"
#include "tests/host/folder_files.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

TEST(StagingLock, NoneWithoutAContainer) {
  const platform::ScopedDesktop desktop({});
  EXPECT_FALSE(lock_staging());
}

TEST(StagingLock, TheLockFileIsPrivateAndStays) {
  const test::TemporaryFolder folder;
  const platform::ScopedDesktop desktop(
      {.files = std::make_shared<test::FolderFiles>(folder.path())});
  EXPECT_TRUE(lock_staging());
  struct stat status {};
  ASSERT_EQ(stat(folder.path(".locks").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  ASSERT_EQ(stat(folder.path(".locks/turn").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_TRUE(lock_staging()) << "once more";
}

TEST(StagingLock, AnotherProcessWaitsUntilItIsFree) {
  const test::TemporaryFolder folder;
  const platform::ScopedDesktop desktop(
      {.files = std::make_shared<test::FolderFiles>(folder.path())});
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  StagingLock lock = lock_staging();
  ASSERT_TRUE(lock);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    lock.reset();  // only this process's share in it: the parent holds the lock
    const int file = open(folder.path(".locks/turn").c_str(), O_RDWR);
    const bool is_free = flock(file, LOCK_EX | LOCK_NB) == 0;
    close(file);
    static_cast<void>(posix::write_all(ends[1], is_free ? "free," : "taken,"));
    const StagingLock next = lock_staging();
    static_cast<void>(posix::write_all(ends[1], next ? "held" : "none"));
    _exit(0);
  }
  close(ends[1]);
  std::string told;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(ends[0], told, 6, ended));
  EXPECT_EQ(told, "taken,");
  lock.reset();
  ASSERT_TRUE(posix::read_until(ends[0], told, 100, ended));
  EXPECT_EQ(told, "taken,held");
  close(ends[0]);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
}

}  // namespace
}  // namespace quoll::share
