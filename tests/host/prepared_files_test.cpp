#include "apps/share/request/prepared_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

unsigned mode_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777U;
}

TEST(PreparedFiles, ArePrivateAndGoWithTheirObject) {
  const test::TemporaryFolder container;
  const std::string incoming = container.path(".incoming");
  std::optional<PreparedFiles> files(container.path());
  EXPECT_FALSE(std::filesystem::exists(incoming)) << "nothing was received yet";
  const auto first = files->make("data.txt");
  const auto second = files->make("data.txt");
  ASSERT_TRUE(first.fd && second.fd);
  EXPECT_NE(first.path, second.path) << "two files of one name";
  EXPECT_TRUE(first.path.ends_with("/data.txt") && second.path.ends_with("/data.txt"));
  EXPECT_EQ(mode_of(first.path), 0600U);
  const std::string folder = std::filesystem::path(first.path).parent_path().parent_path();
  EXPECT_EQ(std::filesystem::path(folder).parent_path(), incoming);
  EXPECT_EQ(mode_of(folder), 0700U);
  posix::sweep_temporary_items(container.path());
  EXPECT_TRUE(std::filesystem::exists(first.path)) << "as long as the share lives";
  files.reset();
  EXPECT_TRUE(std::filesystem::is_empty(incoming));
}

TEST(PreparedFiles, NoneWithoutAContainer) {
  const test::TemporaryFolder folder;
  PreparedFiles files(folder.path("missing"));
  EXPECT_FALSE(files.make("data.txt").fd);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

}  // namespace
}  // namespace quoll::share
