#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "quoll/foundation/error.h"
#include "quoll/linux/posix/copy_item.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/contract/child_process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

namespace fs = std::filesystem;
using foundation::Error;

struct stat status_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status;
}

void set_times(const std::string& path, time_t seconds, long nanoseconds) {
  const std::array<timespec, 2> times{{{seconds + 1, 1}, {seconds, nanoseconds}}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
}

class Copy : public ::testing::Test {
 protected:
  int copy(const std::string& source, const std::string& destination) {
    error_ = files_->copyItemAtPath(source, destination);
    return error_ ? error_->code : 0;
  }
  int copy_here(const std::string& source, const std::string& destination) {
    return copy(folder_.path(source), folder_.path(destination));
  }

  test::TemporaryFolder folder_;
  std::shared_ptr<platform::NSFileManager> files_ = posix::make_file_manager();
  std::optional<Error> error_;
};

TEST_F(Copy, KeepsModeTimesAndExtendedAttributes) {
  for (const mode_t mode : {0400U, 0640U, 0755U, 0000U}) {
    const std::string source = folder_.write("x", "content");
    const bool attributes = ::setxattr(source.c_str(), "user.note", "a\0b", 3, 0) == 0;
    ASSERT_EQ(::chmod(source.c_str(), mode), 0);
    set_times(source, 1000000000, 123456789);
    if (mode == 0 && ::geteuid() != 0) {
      break;  // only root can read it
    }
    ASSERT_EQ(copy_here("x", "y"), 0) << error_->description();
    const struct stat status = status_of(folder_.path("y"));
    EXPECT_EQ(status.st_mode & 07777, mode);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 123456789);
    std::array<char, 8> value{};
    if (attributes) {
      EXPECT_EQ(::getxattr(folder_.path("y").c_str(), "user.note", value.data(), value.size()), 3);
      EXPECT_EQ(std::string(value.data(), 3), std::string("a\0b", 3));
    }
    fs::remove(folder_.path("x"));
    fs::remove(folder_.path("y"));
  }
}

TEST_F(Copy, GivesNobodyTheRightsOfWhoCopied) {
  const std::string source = folder_.write("x", "content");
  ASSERT_EQ(::chmod(source.c_str(), 06755), 0);
  ASSERT_EQ(copy_here("x", "y"), 0);
  EXPECT_EQ(status_of(folder_.path("y")).st_mode & 07777, 0755U);
}

TEST_F(Copy, FilesOfEverySize) {
  for (const std::size_t size : {0UL, 1UL, 4095UL, 4096UL, 1UL << 20, (3UL << 20) + 17}) {
    std::string content(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
      content[i] = static_cast<char>(i * 31 >> 3);
    }
    folder_.write("x", content);
    ASSERT_EQ(copy_here("x", "y"), 0);
    EXPECT_TRUE(test::read_file(folder_.path("y")) == content) << size;
    fs::remove(folder_.path("y"));
  }
}

TEST_F(Copy, HolesStayHoles) {
  const std::string source = folder_.write("x", "begin");
  {
    std::fstream out(source, std::ios::in | std::ios::out | std::ios::binary);
    out.seekp(64 << 20);
    out << "middle";
  }
  fs::resize_file(source, std::uintmax_t{1} << 40);
  if (status_of(source).st_blocks > 4096) {
    GTEST_SKIP() << "this file system has no holes";
  }
  ASSERT_EQ(copy_here("x", "y"), 0) << error_->description();
  EXPECT_EQ(status_of(folder_.path("y")).st_size, off_t{1} << 40);
  EXPECT_LE(status_of(folder_.path("y")).st_blocks, 4096);
  std::ifstream in(folder_.path("y"), std::ios::binary);
  std::string text(5, '?');
  in.read(text.data(), 5);
  EXPECT_EQ(text, "begin");
  in.seekg(64 << 20);
  text.assign(8, '?');
  in.read(text.data(), 8);
  EXPECT_EQ(text, std::string("middle\0\0", 8));
}

TEST_F(Copy, FilesThatClaimToBeEmptyAreReadToTheirEnd) {
  ASSERT_EQ(copy("/proc/self/status", folder_.path("y")), 0) << error_->description();
  EXPECT_NE(test::read_file(folder_.path("y")).find("\nPid:"), std::string::npos);
}

// Files of /sys claim a page, whatever they hold.
TEST_F(Copy, OfAFileOfTheSystemThereIsWhatCanBeRead) {
  const std::string file = "/sys/kernel/fscaps";
  if (::access(file.c_str(), R_OK) != 0) {
    GTEST_SKIP() << "there is no " << file;
  }
  ASSERT_EQ(copy(file, folder_.path("y")), 0) << error_->description();
  EXPECT_EQ(test::read_file(folder_.path("y")), test::read_file(file));
}

// The second claims as many bytes as there are addresses; not everybody can read the two.
TEST_F(Copy, SomebodyWhoLooksOnMayEndIt) {
  constexpr std::size_t kSize = std::size_t{40} << 20;
  const std::string source = folder_.write("x", std::string(kSize, 'x'));
  std::uint64_t seen = 0;
  const auto count = [&](std::uint64_t bytes) {
    EXPECT_LE(bytes, std::uint64_t{16} << 20);
    seen += bytes;
    return true;
  };
  EXPECT_FALSE(posix::copy_item(source, folder_.path("whole"), count));
  EXPECT_TRUE(seen == kSize || seen == 0) << "where blocks are shared there is nothing to see";
  const bool is_shared = seen == 0;
  const auto failure =
      posix::copy_item(source, folder_.path("ended"), [](std::uint64_t) { return false; });
  if (!is_shared) {
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number, ECANCELED);
    EXPECT_FALSE(fs::exists(folder_.path("ended")));
  }
}

TEST_F(Copy, AFileWithoutAnEndIsRefused) {
  for (const std::string file : {"/proc/self/pagemap", "/proc/kcore"}) {
    EXPECT_EQ(
        test::in_child_process([&]() -> std::string {
          const rlimit room{off_t{256} << 20, off_t{256} << 20};
          if (::setrlimit(RLIMIT_FSIZE, &room) != 0 || std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) {
            return "no limit can be set";
          }
          const int code = copy(file, folder_.path("y"));
          if (::access(file.c_str(), R_OK) != 0 ||
              code == foundation::NSFileReadNoPermissionError) {
            return "";
          }
          if (code != foundation::NSFileReadUnknownError || error_->underlying() == nullptr ||
              error_->underlying()->code != EFBIG) {
            return error_ ? error_->description() : "it was copied";
          }
          return fs::exists(folder_.path("y")) ? "a part of it is there" : "";
        }),
        "")
        << file;
  }
}

TEST_F(Copy, AFileThatChangesMeanwhileIsCopiedAsFarAsItGoes) {
  const std::string source = folder_.write("x", "");
  std::atomic<bool> stop = false;
  std::thread writer([&] {
    const posix::UniqueFd file(::open(source.c_str(), O_WRONLY | O_CLOEXEC));
    const std::string piece(1 << 16, 'a');
    for (int i = 0; !stop; ++i) {
      if (i % 64 == 63) {
        EXPECT_EQ(::ftruncate(file.get(), 0), 0);
        ::lseek(file.get(), 0, SEEK_SET);
      }
      EXPECT_EQ(::write(file.get(), piece.data(), piece.size()),
                static_cast<ssize_t>(piece.size()));
    }
  });
  for (int i = 0; i < 50; ++i) {
    const std::string name = "y" + std::to_string(i);
    EXPECT_EQ(copy_here("x", name), 0);
    EXPECT_EQ(test::read_file(folder_.path(name)).find_first_not_of(std::string("a\0", 2)),
              std::string::npos);
  }
  stop = true;
  writer.join();
}

TEST_F(Copy, AFileThatGrowsHasTheSizeThatItHad) {
  constexpr std::uintmax_t kSize = std::uintmax_t{8} << 20;
  for (const bool has_holes : {false, true}) {
    const std::string source =
        folder_.write("x", std::string(has_holes ? std::size_t{1} << 16 : kSize, 'a'));
    fs::resize_file(source, kSize);
    const std::string name = has_holes ? "holes" : "whole";
    int pieces = 0;
    const auto grow = [&](std::uint64_t /*bytes*/) {
      constexpr int kMany = 1000;
      std::ofstream(source, std::ios::app) << std::string(std::size_t{1} << 16, 'b');
      return ++pieces < kMany;
    };
    EXPECT_FALSE(posix::copy_item(source, folder_.path(name), grow)) << name;
    EXPECT_EQ(fs::file_size(folder_.path(name)), kSize) << name;
  }
}

TEST_F(Copy, ALinkIsFollowedWhenItIsTheItem) {
  folder_.write("x", "content");
  fs::create_symlink("x", folder_.path("link"));
  ASSERT_EQ(copy_here("link", "y"), 0);
  EXPECT_FALSE(fs::is_symlink(folder_.path("y")));
  EXPECT_EQ(test::read_file(folder_.path("y")), "content");
  fs::create_symlink("nowhere", folder_.path("broken"));
  EXPECT_EQ(copy_here("broken", "z"), foundation::NSFileReadNoSuchFileError);
  EXPECT_EQ(copy_here("x", "broken"), foundation::NSFileWriteFileExistsError)
      << "a broken link takes its name all the same";
}

TEST_F(Copy, WhatIsNeitherFileNorFolderIsRefusedAndNeverWaitedFor) {
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", folder_.path("link"));
  fs::create_directory(folder_.path("f"));
  ASSERT_EQ(::mkfifo(folder_.path("f/inner").c_str(), 0600), 0);
  for (const std::string& source :
       {folder_.path("pipe"), folder_.path("link"), folder_.path("f"), std::string("/dev/zero")}) {
    EXPECT_NE(copy(source, folder_.path("y")), 0) << source;
    EXPECT_NE(error_->text.find("neither a file nor a folder"), std::string::npos) << error_->text;
    EXPECT_FALSE(fs::exists(folder_.path("y")));
  }
  const fs::directory_iterator left(folder_.path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 3) << "nothing is left behind";
}

TEST_F(Copy, AFolderIsCopiedWhole) {
  fs::create_directories(folder_.path("f/sub"));
  folder_.write("f/sub/x", "content");
  fs::create_symlink("../elsewhere", folder_.path("f/link"));
  set_times(folder_.path("f/link"), 900000000, 7);
  fs::permissions(folder_.path("f/sub"), fs::perms(0500));
  set_times(folder_.path("f/sub"), 1000000000, 5);
  fs::permissions(folder_.path("f"), fs::perms(0550));
  set_times(folder_.path("f"), 1100000000, 6);
  ASSERT_EQ(copy_here("f", "g"), 0) << error_->description();
  EXPECT_EQ(test::read_file(folder_.path("g/sub/x")), "content");
  EXPECT_EQ(fs::read_symlink(folder_.path("g/link")), "../elsewhere");
  EXPECT_EQ(status_of(folder_.path("g/link")).st_mtim.tv_sec, 900000000);
  EXPECT_EQ(status_of(folder_.path("g/sub")).st_mode & 07777, 0500U);
  EXPECT_EQ(status_of(folder_.path("g/sub")).st_mtim.tv_nsec, 5);
  EXPECT_EQ(status_of(folder_.path("g")).st_mode & 07777, 0550U);
  EXPECT_EQ(status_of(folder_.path("g")).st_mtim.tv_nsec, 6);
  for (const char* name : {"f", "f/sub", "g", "g/sub"}) {
    fs::permissions(folder_.path(name), fs::perms(0700));  // so that the folder can be removed
  }
}

TEST_F(Copy, AFolderIsNotCopiedIntoItselfByWhateverName) {
  fs::create_directories(folder_.path("f/sub"));
  fs::create_symlink("f/sub", folder_.path("link"));
  EXPECT_NE(copy_here("f", "link/g"), 0);
  EXPECT_NE(error_->text.find("into itself"), std::string::npos) << error_->text;
  EXPECT_TRUE(fs::is_empty(folder_.path("f/sub")));
  EXPECT_EQ(copy_here("f/sub", "f/other"), 0) << "beside itself is fine";
}

TEST_F(Copy, IntoAContainerAFolderIsBuiltOutOfSight) {
  ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path("containers").c_str(), 1);
  fs::create_directories(folder_.path("containers/group/SharedData/Share"));
  fs::create_directories(folder_.path("f"));
  EXPECT_EQ(copy_here("f", "containers/group/SharedData/Share/f"), 0) << error_->description();
  EXPECT_TRUE(fs::is_directory(folder_.path("containers/group/SharedData/Share/f")));
  EXPECT_TRUE(fs::is_empty(folder_.path("containers/group/.incoming")));
  EXPECT_NE(copy_here("containers/group", "containers/group/SharedData/g"), 0);
  EXPECT_NE(copy_here("containers/group/.incoming", "containers/group/SharedData/g"), 0)
      << "the folder in which copies are built holds the copy";
  ::unsetenv("QUOLL_GROUP_CONTAINERS");
}

TEST_F(Copy, DepthNeedsNeitherStackNorDescriptors) {
  constexpr int kDepth = 3000;  // deeper than a path can name and than there are descriptors
  const std::string top = folder_.path("deep");
  ASSERT_EQ(::mkdir(top.c_str(), 0700), 0);
  posix::UniqueFd here(::open(top.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < kDepth; ++i) {
    ASSERT_EQ(::mkdirat(here.get(), "d", 0700), 0);
    here = posix::UniqueFd(::openat(here.get(), "d", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  posix::UniqueFd(::openat(here.get(), "leaf", O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  ASSERT_EQ(copy_here("deep", "copy"), 0) << error_->description();
  here = posix::UniqueFd(::open(folder_.path("copy").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < kDepth; ++i) {
    here = posix::UniqueFd(::openat(here.get(), "d", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  EXPECT_EQ(::faccessat(here.get(), "leaf", F_OK, 0), 0);
  for (const char* name : {"deep", "copy"}) {
    error_ = files_->removeItemAtURL(foundation::NSURL::file_url(folder_.path(name), true));
    EXPECT_FALSE(error_) << error_->description();
  }
}

TEST_F(Copy, PermissionsAreToldApart) {
  folder_.write("secret", "content");
  folder_.write("open", "content");
  fs::create_directories(folder_.path("closed"));
  fs::create_directories(folder_.path("f/sub"));
  fs::permissions(folder_.path("secret"), fs::perms(0200));
  fs::permissions(folder_.path("open"), fs::perms(0644));
  fs::permissions(folder_.path("closed"), fs::perms(0555));
  fs::permissions(folder_.path("f/sub"), fs::perms(0000));
  fs::permissions(folder_.path("f"), fs::perms(0755));
  fs::permissions(folder_.path(), fs::perms(0777));
  EXPECT_EQ(test::in_child_process([&]() -> std::string {
              if (!test::become_nobody()) {
                return "cannot become nobody";
              }
              if (copy_here("secret", "y") != foundation::NSFileReadNoPermissionError) {
                return "a source that cannot be read";
              }
              if (copy_here("f", "y") != foundation::NSFileReadNoPermissionError) {
                return "a folder inside that cannot be read";
              }
              if (copy_here("open", "closed/y") != foundation::NSFileWriteNoPermissionError) {
                return "a folder that cannot be written";
              }
              return copy_here("open", "y") != 0 ? error_->description() : std::string();
            }),
            "");
  fs::permissions(folder_.path("f/sub"), fs::perms(0700));
}

}  // namespace
}  // namespace quoll
