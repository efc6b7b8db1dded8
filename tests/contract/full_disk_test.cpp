#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "quoll/linux/posix/files.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

namespace fs = std::filesystem;
using foundation::Bytes;

/// A small file system of its own, for as long as the test runs.
class FullDisk : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(mount_);
    mounted_ = ::mount("tmpfs", mount_.c_str(), "tmpfs", 0, "size=1m") == 0;
    if (!mounted_) {
      const std::string why = std::string("cannot mount: ") + std::strerror(errno);
      const char* ci = std::getenv("CI");
      ASSERT_FALSE(ci != nullptr && std::string(ci) == "true") << why;
      GTEST_SKIP() << why;
    }
  }
  ~FullDisk() override {
    if (mounted_) {
      ::umount2(mount_.c_str(), MNT_DETACH);
    }
  }

  std::optional<foundation::Error> write(const Bytes& data,
                                         platform::NSDataWritingOptions options) {
    return files_->writeToFile(data, mount_ + "/z", options);
  }
  [[nodiscard]] bool is_empty() const { return fs::is_empty(mount_); }

  test::TemporaryFolder folder_;
  const std::string mount_ = folder_.path("small");
  bool mounted_ = false;
  std::shared_ptr<platform::NSFileManager> files_ = posix::make_file_manager();
};

TEST_F(FullDisk, WhatDoesNotFitIsToldAndLeavesNothing) {
  const std::string source = folder_.write("big", std::string(2 << 20, 'a'));
  auto error = files_->copyItemAtPath(source, mount_ + "/y");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, foundation::NSFileWriteOutOfSpaceError);
  EXPECT_EQ(*error->detail("NSFilePath"), mount_ + "/y");
  EXPECT_EQ(*error->detail("NSSourceFilePathErrorKey"), source);
  EXPECT_EQ(error->text, "“y” couldn’t be written because there is not enough space.");
  EXPECT_TRUE(is_empty());

  fs::create_directories(folder_.path("f/sub"));
  fs::rename(source, folder_.path("f/sub/big"));
  error = files_->copyItemAtPath(folder_.path("f"), mount_ + "/f");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, foundation::NSFileWriteOutOfSpaceError);
  EXPECT_TRUE(is_empty());

  error = write(Bytes(2 << 20), platform::NSDataWritingAtomic);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, foundation::NSFileWriteOutOfSpaceError);
  EXPECT_TRUE(is_empty());
}

TEST_F(FullDisk, AnAtomicWriteThatDoesNotFitKeepsWhatWasThere) {
  ASSERT_FALSE(write({'a'}, platform::NSDataWritingAtomic));
  EXPECT_TRUE(write(Bytes(2 << 20), platform::NSDataWritingAtomic));
  EXPECT_EQ(test::read_file(mount_ + "/z"), "a");
}

TEST_F(FullDisk, AReadOnlyVolumeIsTold) {
  const std::string source = folder_.write("x", "content");
  ASSERT_FALSE(files_->writeToFile({'a'}, mount_ + "/there", {}));
  ASSERT_EQ(::mount(nullptr, mount_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  const auto url = [&](const char* name) {
    return foundation::NSURL::file_url(mount_ + name, false);
  };
  const auto expect_read_only = [](const std::optional<foundation::Error>& error) {
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, foundation::NSFileWriteVolumeReadOnlyError);
  };
  expect_read_only(files_->copyItemAtPath(source, mount_ + "/y"));
  expect_read_only(write({'a'}, {}));
  expect_read_only(write({'a'}, platform::NSDataWritingAtomic));
  expect_read_only(files_->createDirectoryAtURL(url("/f")));
  expect_read_only(files_->removeItemAtURL(url("/there")));
  EXPECT_FALSE(files_->createDirectoryAtURL(url("/"))) << "it is there";
}

TEST_F(FullDisk, ACopyCrossesFileSystems) {
  const std::string source = folder_.write("x", "content");
  EXPECT_FALSE(files_->copyItemAtPath(source, mount_ + "/y"));
  EXPECT_FALSE(files_->copyItemAtPath(mount_ + "/y", folder_.path("z")));
  EXPECT_EQ(test::read_file(folder_.path("z")), "content");
}

TEST_F(FullDisk, AContainerWhoseFolderIsAnotherFileSystemStillGetsFolders) {
  ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path().c_str(), 1);
  fs::create_directories(folder_.path("f/sub"));
  fs::create_directory(mount_ + "/inner");
  // "small" is a container; what is mounted inside another one is the odd case.
  fs::create_directories(folder_.path("group/Share"));
  ASSERT_EQ(::mount("tmpfs", folder_.path("group/Share").c_str(), "tmpfs", 0, "size=1m"), 0);
  EXPECT_FALSE(files_->copyItemAtPath(folder_.path("f"), folder_.path("group/Share/f")));
  EXPECT_TRUE(fs::is_directory(folder_.path("group/Share/f/sub")));
  ::umount2(folder_.path("group/Share").c_str(), MNT_DETACH);
  ::unsetenv("QUOLL_GROUP_CONTAINERS");
}

}  // namespace
}  // namespace quoll
