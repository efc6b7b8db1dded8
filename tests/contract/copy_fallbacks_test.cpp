#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/temporary_item.h"
#include "tests/contract/child_process.h"
#include "tests/support/temporary_folder.h"

/// What copies do on file systems that lack something. The kernel is told to answer in this process
/// as it does there.
namespace quoll {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kArgument2 = offsetof(seccomp_data, args) + 2 * sizeof(std::uint64_t);

/// A call, and how it fails. With `flag` it fails only when its third argument has that bit.
struct Missing {
  long call;
  std::uint32_t flag;
  std::uint32_t number;
};

bool take_away(std::initializer_list<Missing> calls) {
  std::vector<sock_filter> program;
  for (const Missing& missing : calls) {
    program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    program.push_back(
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(missing.call), 0, 3));
    program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kArgument2));
    program.push_back(
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, missing.flag != 0 ? missing.flag : ~0U, 0, 1));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | missing.number));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

constexpr std::uint32_t kUnnamedFile = O_TMPFILE & ~O_DIRECTORY;
constexpr Missing kNoUnnamedFile{SYS_openat, kUnnamedFile, EOPNOTSUPP};
constexpr int kCopiers = 8;
constexpr Missing kNoExclusiveRename{SYS_renameat2, 0, EINVAL};

class CopyFallbacks : public ::testing::Test {
 protected:
  CopyFallbacks() {
    fs::create_directories(staging_);
    folder_.write("x", "content");
    ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path("containers").c_str(), 1);
  }
  ~CopyFallbacks() override { ::unsetenv("QUOLL_GROUP_CONTAINERS"); }

  /// Copies in a process that lacks these calls; what is wrong.
  std::string copy_without(std::initializer_list<Missing> calls, const std::string& destination) {
    return test::in_child_process([&]() -> std::string {
      if (!take_away(calls)) {
        return "no filter";
      }
      const auto error = posix::make_file_manager()->copyItemAtPath(folder_.path("x"), destination);
      return error ? std::to_string(error->code) : "";
    });
  }

  static std::ptrdiff_t entries(const std::string& folder) {
    const fs::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
  }

  test::TemporaryFolder folder_;
  const std::string container_ = folder_.path("containers/group");
  const std::string staging_ = container_ + "/SharedData/Share";
};

TEST_F(CopyFallbacks, WithoutUnnamedFilesAHiddenNameOutsideTheStagingFolderIsUsed) {
  EXPECT_EQ(copy_without({kNoUnnamedFile}, staging_ + "/y"), "");
  EXPECT_EQ(test::read_file(staging_ + "/y"), "content");
  EXPECT_EQ(copy_without({kNoUnnamedFile}, staging_ + "/y"), "516") << "never replaces";
  EXPECT_EQ(entries(staging_), 1);
  EXPECT_TRUE(fs::is_directory(container_ + "/.incoming"));
  EXPECT_TRUE(fs::is_empty(container_ + "/.incoming"));
}

TEST_F(CopyFallbacks, OutsideAContainerTheHiddenNameIsBesideTheDestination) {
  EXPECT_EQ(copy_without({kNoUnnamedFile}, folder_.path("y")), "");
  EXPECT_EQ(test::read_file(folder_.path("y")), "content");
  EXPECT_EQ(entries(folder_.path()), 3) << "nothing hidden is left";
}

// Two mounts of one file system have one device, but nothing can be renamed from one to the other.
TEST_F(CopyFallbacks, IntoAMountOfItsOwnTheHiddenNameIsBesideTheDestination) {
  fs::create_directory(folder_.path("folder"));
  folder_.write("folder/inner", "inside");
  const std::string wrong = test::in_child_process([&]() -> std::string {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
      return "not allowed";
    }
    if (::mount(staging_.c_str(), staging_.c_str(), nullptr, MS_BIND, nullptr) != 0 ||
        !take_away({kNoUnnamedFile})) {
      return "no mount or no filter";
    }
    const auto files = posix::make_file_manager();
    const auto file = files->copyItemAtPath(folder_.path("x"), staging_ + "/y");
    const auto folder = files->copyItemAtPath(folder_.path("folder"), staging_ + "/folder");
    return (file ? file->description() : "") + (folder ? folder->description() : "");
  });
  if (wrong == "not allowed") {
    GTEST_SKIP() << "this process may not mount";
  }
  EXPECT_EQ(wrong, "");
  EXPECT_EQ(test::read_file(staging_ + "/y"), "content");
  EXPECT_EQ(test::read_file(staging_ + "/folder/inner"), "inside");
  EXPECT_EQ(entries(staging_), 2) << "nothing hidden is left";
}

TEST_F(CopyFallbacks, WithoutExclusiveRenames) {
  EXPECT_EQ(copy_without({kNoUnnamedFile, kNoExclusiveRename}, staging_ + "/y"), "");
  EXPECT_EQ(test::read_file(staging_ + "/y"), "content");
  EXPECT_EQ(copy_without({kNoUnnamedFile, kNoExclusiveRename}, staging_ + "/y"), "516");
}

TEST_F(CopyFallbacks, WithoutNamesForUnnamedFiles) {
  // As without /proc. The fourth argument of linkat is the name; the third is any folder.
  EXPECT_EQ(copy_without({{SYS_linkat, 0, ENOENT}}, staging_ + "/y"), "");
  EXPECT_EQ(test::read_file(staging_ + "/y"), "content");
}

TEST_F(CopyFallbacks, WithoutCopiesInsideTheKernel) {
  for (const int number : {EXDEV, ENOSYS, EOPNOTSUPP, EINVAL, EPERM}) {
    EXPECT_EQ(copy_without({{SYS_copy_file_range, 0, static_cast<std::uint32_t>(number)}},
                           staging_ + "/y"),
              "");
    EXPECT_EQ(test::read_file(staging_ + "/y"), "content");
    fs::remove(staging_ + "/y");
  }
}

TEST_F(CopyFallbacks, WithoutLocks) {
  EXPECT_EQ(copy_without({kNoUnnamedFile, {SYS_flock, 0, EBADF}}, staging_ + "/y"), "");
  EXPECT_EQ(copy_without({kNoUnnamedFile, {SYS_flock, 0, EBADF}}, staging_ + "/z"), "");
  EXPECT_EQ(entries(staging_), 2);
}

TEST_F(CopyFallbacks, OneOfManyGetsTheNameWhicheverWayIsTaken) {
  // Nothing coordinates here: the name itself is taken exclusively.
  folder_.write("x", std::string(4 << 20, 'a'));
  for (const std::uint32_t flag : {0x80000000U, kUnnamedFile}) {  // the first is no flag of open
    for (int round = 0; round < 5; ++round) {
      EXPECT_EQ(test::in_child_process([&]() -> std::string {
                  if (!take_away({{SYS_openat, flag, EOPNOTSUPP}})) {
                    return "no filter";
                  }
                  std::atomic<int> copied = 0;
                  std::latch start(kCopiers);
                  std::vector<std::thread> copiers;
                  for (int i = 0; i < kCopiers; ++i) {
                    copiers.emplace_back([&] {
                      start.arrive_and_wait();
                      copied += posix::make_file_manager()->copyItemAtPath(folder_.path("x"),
                                                                           staging_ + "/y")
                                    ? 0
                                    : 1;
                    });
                  }
                  for (std::thread& copier : copiers) {
                    copier.join();
                  }
                  return copied == 1 ? "" : std::to_string(copied) + " copies got the name";
                }),
                "");
      fs::remove(staging_ + "/y");
    }
  }
}

TEST_F(CopyFallbacks, WhereThereAreUnnamedFilesNoHiddenNameIsUsed) {
  const posix::UniqueFd unnamed(::open(staging_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
  if (!unnamed) {
    GTEST_SKIP() << "no unnamed files here";
  }
  EXPECT_EQ(copy_without({}, staging_ + "/y"), "");
  EXPECT_FALSE(fs::exists(container_ + "/.incoming"));
}

TEST_F(CopyFallbacks, AKilledCopyLeavesNothingUnderTheName) {
  fs::resize_file(folder_.path("x"), 0);
  {
    std::ofstream out(folder_.path("x"), std::ios::binary);
    const std::string piece(1 << 20, 'a');
    for (int i = 0; i < 64; ++i) {
      out << piece;
    }
  }
  for (const bool unnamed : {true, false}) {
    for (int delay = 0; delay < 8; ++delay) {
      const pid_t child = ::fork();
      if (child == 0) {
        if (!unnamed && !take_away({kNoUnnamedFile})) {
          ::_exit(1);
        }
        (void)posix::make_file_manager()->copyItemAtPath(folder_.path("x"), staging_ + "/y");
        ::_exit(0);
      }
      ::usleep(static_cast<useconds_t>(delay) * 3000);
      ::kill(child, SIGKILL);
      ::waitpid(child, nullptr, 0);
      EXPECT_LE(entries(staging_), 1);
      if (fs::exists(staging_ + "/y")) {
        EXPECT_EQ(fs::file_size(staging_ + "/y"), std::uintmax_t{64} << 20);
        fs::remove(staging_ + "/y");
      }
    }
  }
  posix::sweep_temporary_items(container_);
  EXPECT_TRUE(fs::is_empty(container_ + "/.incoming"));
}

}  // namespace
}  // namespace quoll
