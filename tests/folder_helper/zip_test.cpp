// What stands in the ZIP file of a folder, whatever happens to its files meanwhile.
#include "apps/folder-helper/zip.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "quoll/linux/posix/descriptor_io.h"
#include "tests/folder_helper/zip_entries.h"
#include "tests/support/temporary_folder.h"

namespace quoll::folder_helper {
namespace {

using Names = std::vector<std::string>;

class ZipTest : public testing::Test {
 protected:
  /// Adds the file after something has happened to it since it was looked at.
  template <typename Change>
  void add(const std::string& name, const Change& change) {
    struct stat status {};
    ASSERT_EQ(stat(folder_.path(name).c_str(), &status), 0);
    change(folder_.path(name));
    zip_.file("f/" + name, status, parent_.get(), name.c_str());
  }

  test::TemporaryFolder folder_;
  posix::UniqueFd parent_ = posix::open_file(folder_.path(), O_RDONLY | O_DIRECTORY);
  std::string path_ = folder_.path("out.zip");
  posix::UniqueFd output_ = posix::open_file(path_, O_RDWR | O_CREAT, 0600);
  Zip zip_{output_.get()};
};

TEST_F(ZipTest, AFileThatGrowsHasTheSizeThatItHad) {
  folder_.write("a", "12345");
  add("a", [](const std::string& path) { EXPECT_EQ(truncate(path.c_str(), 1'000'000), 0); });
  EXPECT_EQ(zip_.end(), "");
  EXPECT_EQ(test::zip_entries(path_), (Names{"f/a 5 644"}));
}

TEST_F(ZipTest, AFileThatShrinksHasWhatIsLeft) {
  folder_.write("a", "12345");
  folder_.write("b", "x");
  add("a", [](const std::string& path) { EXPECT_EQ(truncate(path.c_str(), 2), 0); });
  add("b", [](const std::string& path) { EXPECT_EQ(truncate(path.c_str(), 0), 0); });
  EXPECT_EQ(zip_.end(), "");
  EXPECT_EQ(test::zip_entries(path_), (Names{"f/a 2 644", "f/b 0 644"}));
}

TEST_F(ZipTest, AFileThatGoesOrIsAnotherIsTold) {
  for (const char* const name : {"gone", "link", "pipe"}) {
    folder_.write(name, "x");
  }
  add("gone", [](const std::string& path) { unlink(path.c_str()); });
  add("link", [](const std::string& path) {
    unlink(path.c_str());
    EXPECT_EQ(symlink("/etc/passwd", path.c_str()), 0);
  });
  add("pipe", [](const std::string& path) {
    unlink(path.c_str());
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
  });
  EXPECT_EQ(zip_.end(),
            "no such file or directory\tf/gone\ntoo many levels of symbolic links\tf/link\n"
            "it is a pipe\tf/pipe\n");
  EXPECT_EQ(test::zip_entries(path_), Names{});
}

TEST_F(ZipTest, ManyThatAreLeftOutAreCounted) {
  for (int i = 0; i < 1000; ++i) {
    zip_.left_out("f/" + std::string(50, 'x') + std::to_string(i), "it is a pipe");
  }
  const std::string told = zip_.end();
  EXPECT_LT(told.size(), 4096U);
  const auto lines = test::split_lines(told);
  EXPECT_EQ(lines.back(),
            "they cannot be packed\t" + std::to_string(1000 - (lines.size() - 1)) + " more");
}

TEST_F(ZipTest, WhatCannotBeWrittenIsAnError) {
  const posix::UniqueFd full = posix::open_file("/dev/full", O_WRONLY);
  Zip zip(full.get());
  folder_.write("a", std::string(100'000, 'x'));
  struct stat status {};
  ASSERT_EQ(stat(folder_.path("a").c_str(), &status), 0);
  try {
    zip.file("f/a", status, parent_.get(), "a");
    static_cast<void>(zip.end());
    FAIL();
  } catch (const PackError& error) {
    EXPECT_STREQ(error.what(), "no space left on device");
  }
}

}  // namespace
}  // namespace quoll::folder_helper
