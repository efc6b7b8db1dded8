#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "quoll/linux/posix/files.h"
#include "tests/contract/child_process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

namespace fs = std::filesystem;
using foundation::NSURL;

class Remove : public ::testing::Test {
 protected:
  int remove(const std::string& path) {
    error_ = files_->removeItemAtURL(NSURL::file_url(path, false));
    return error_ ? error_->code : 0;
  }

  test::TemporaryFolder folder_;
  std::shared_ptr<platform::NSFileManager> files_ = posix::make_file_manager();
  std::optional<foundation::Error> error_;
};

TEST_F(Remove, LinksAreRemovedNeverFollowed) {
  fs::create_directories(folder_.path("kept"));
  folder_.write("kept/x", "content");
  fs::create_directories(folder_.path("f"));
  fs::create_symlink(folder_.path("kept"), folder_.path("f/link"));
  fs::create_symlink(folder_.path("kept"), folder_.path("link"));
  EXPECT_EQ(remove(folder_.path("f")), 0);
  EXPECT_EQ(remove(folder_.path("link/")), 0) << "a slash at the end means nothing";
  EXPECT_FALSE(fs::exists(folder_.path("f")));
  EXPECT_FALSE(fs::is_symlink(folder_.path("link")));
  EXPECT_EQ(test::read_file(folder_.path("kept/x")), "content");
  fs::create_symlink("nowhere", folder_.path("broken"));
  EXPECT_EQ(remove(folder_.path("broken")), 0);
}

TEST_F(Remove, WhateverIsInsideGoes) {
  fs::create_directories(folder_.path("f/a/b"));
  folder_.write("f/a/b/\xff bad name\n", "");
  folder_.write("f/a/readonly", "");
  fs::permissions(folder_.path("f/a/readonly"), fs::perms(0));
  ASSERT_EQ(::mkfifo(folder_.path("f/pipe").c_str(), 0600), 0);
  for (int i = 0; i < 1000; ++i) {
    folder_.write("f/a/" + std::to_string(i), "");
  }
  EXPECT_EQ(remove(folder_.path("f")), 0);
  EXPECT_FALSE(fs::exists(folder_.path("f")));
}

TEST_F(Remove, NamesThatNobodyMeansAreRefused) {
  fs::create_directories(folder_.path("f/g"));
  for (const std::string& path : {folder_.path("f/."), folder_.path("f/g/.."), std::string("/")}) {
    EXPECT_NE(remove(path), 0) << path;
  }
  EXPECT_TRUE(fs::is_directory(folder_.path("f/g")));
}

TEST_F(Remove, OwnFoldersThatCannotBeReadAreRemoved) {
  fs::permissions(folder_.path(), fs::perms(0777));
  EXPECT_EQ(test::in_child_process([&]() -> std::string {
              if (!test::become_nobody()) {
                return "cannot become nobody";
              }
              for (const unsigned mode : {0U, 0400U, 0100U, 0500U, 0300U}) {
                fs::create_directories(folder_.path("f/closed/inner"));
                folder_.write("f/closed/inner/x", "");
                fs::permissions(folder_.path("f/closed/inner"), fs::perms(mode));
                fs::permissions(folder_.path("f/closed"), fs::perms(mode));
                if (remove(folder_.path("f")) != 0) {
                  return std::to_string(mode) + error_->description();
                }
              }
              return "";
            }),
            "");
}

TEST_F(Remove, GoesOnAfterAFailureAndTellsTheFirst) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can make a folder of somebody else";
  }
  fs::create_directories(folder_.path("f/foreign"));
  folder_.write("f/foreign/x", "");
  fs::permissions(folder_.path("f/foreign"), fs::perms(0755));
  for (const char* name : {"f/a", "f/z"}) {
    fs::create_directories(folder_.path(name));
    folder_.write(std::string(name) + "/x", "");
  }
  for (const char* name : {"", "f", "f/a", "f/z"}) {
    ASSERT_EQ(::chown(folder_.path(name).c_str(), 65534, 65534), 0);
  }
  EXPECT_EQ(test::in_child_process([&]() -> std::string {
              if (!test::become_nobody()) {
                return "cannot become nobody";
              }
              const int code = remove(folder_.path("f"));
              return code == foundation::NSFileWriteNoPermissionError ? "" : std::to_string(code);
            }),
            "");
  EXPECT_TRUE(fs::exists(folder_.path("f/foreign/x")));
  EXPECT_FALSE(fs::exists(folder_.path("f/a")));
  EXPECT_FALSE(fs::exists(folder_.path("f/z")));
}

}  // namespace
}  // namespace quoll
