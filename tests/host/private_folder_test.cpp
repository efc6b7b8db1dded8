#include "apps/share/request/private_folder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

unsigned mode_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777U;
}

TEST(PrivateFolder, IsPrivateAndGoesWithItsObject) {
  std::string path;
  {
    const auto folder = PrivateFolder::make();
    ASSERT_TRUE(folder);
    path = folder->path();
    EXPECT_EQ(mode_of(path), 0700U);
    std::string first;
    std::string second;
    ASSERT_TRUE(folder->create("data.txt", first));
    ASSERT_TRUE(folder->create("data.txt", second));
    EXPECT_NE(first, second) << "two files of one name";
    EXPECT_TRUE(first.ends_with("/data.txt") && second.ends_with("/data.txt"));
    EXPECT_EQ(mode_of(first), 0600U);
    EXPECT_TRUE(first.starts_with(path + "/"));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(PrivateFolder, GoesWhenTheProgramIsKilled) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const auto folder = PrivateFolder::make();
    std::string file;
    const bool is_made = folder && folder->create("data.txt", file);
    static_cast<void>(posix::write_all(ends[1], is_made ? folder->path() : ""));
    kill(getpid(), SIGKILL);
  }
  close(ends[1]);
  std::string path;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(ends[0], path, 4096, ended));
  close(ends[0]);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  ASSERT_FALSE(path.empty());
  while (std::filesystem::exists(path)) {
    usleep(1000);  // the test runner's limit ends a wait that is in vain
  }
}

TEST(PrivateFolder, NoneWithoutATemporaryFolder) {
  const test::TemporaryFolder folder;
  ASSERT_EQ(setenv("TMPDIR", folder.path("missing").c_str(), 1), 0);
  EXPECT_FALSE(PrivateFolder::make());
  EXPECT_EQ(errno, ENOENT);
  unsetenv("TMPDIR");
}

}  // namespace
}  // namespace quoll::share
