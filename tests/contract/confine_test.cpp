#include "apps/sandbox/confine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "tests/contract/child_process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

namespace fs = std::filesystem;

bool can_open(const std::string& path, int flags) {
  return static_cast<bool>(posix::UniqueFd(::open(path.c_str(), flags | O_CLOEXEC, 0600)));
}

/// How a program ended; 127 when it could not be started.
int run(const char* program) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::execl(program, program, nullptr);
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WEXITSTATUS(status);
}

class Confine : public ::testing::Test {
 protected:
  void SetUp() override {
    if (::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) < 2) {
      const char* ci = std::getenv("CI");
      ASSERT_FALSE(ci != nullptr && std::string(ci) == "true") << "no Landlock here";
      GTEST_SKIP() << "no Landlock here";
    }
    fs::create_directories(folder_.path("in"));
    fs::create_directories(folder_.path("out/tree/sub"));
    folder_.write("in/unlisted", "content");
    folder_.write("out/tree/sub/inner", "content");
    folder_.write("file", "content");
    folder_.write("unlisted", "content");
  }

  /// Runs a check in a confined child; what is wrong.
  std::string confined(const std::function<std::string()>& check) {
    return test::in_child_process([&]() -> std::string {
      const sandbox::Confinement wanted{
          .readable = {folder_.path("in"), folder_.path("file"), folder_.path("missing")},
          .writable = {folder_.path("out")},
          .executable = {"/bin/true"}};
      return sandbox::confine(wanted) ? check() : "not confined";
    });
  }

  test::TemporaryFolder folder_;
};

TEST_F(Confine, OnlyWhatIsListedCanBeRead) {
  EXPECT_EQ(confined([&]() -> std::string {
              if (!can_open(folder_.path("file"), O_RDONLY)) {
                return "what is listed cannot be read";
              }
              // A folder among the files, as when somebody put it in a file's place, is none.
              if (can_open(folder_.path("in/unlisted"), O_RDONLY) ||
                  can_open(folder_.path("in"), O_RDONLY | O_DIRECTORY) ||
                  can_open(folder_.path("unlisted"), O_RDONLY) ||
                  can_open(folder_.path(), O_RDONLY | O_DIRECTORY) ||
                  can_open("/etc/hostname", O_RDONLY)) {
                return "what is not listed can be read";
              }
              return "";
            }),
            "");
}

TEST_F(Confine, OnlyTheWritableCanBeWritten) {
  EXPECT_EQ(confined([&]() -> std::string {
              for (const char* name : {"in/unlisted", "file", "unlisted", "in/new", "new"}) {
                if (can_open(folder_.path(name), O_WRONLY | O_CREAT) ||
                    ::truncate(folder_.path(name).c_str(), 0) == 0 ||
                    ::unlink(folder_.path(name).c_str()) == 0) {
                  return name;
                }
              }
              return ::mkdir(folder_.path("in/d").c_str(), 0700) == 0 ? "a folder" : "";
            }),
            "");
  EXPECT_EQ(test::read_file(folder_.path("file")), "content");
}

TEST_F(Confine, StagingWorks) {
  ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path("out").c_str(), 1);
  EXPECT_EQ(confined([&]() -> std::string {
              const auto files = posix::make_file_manager();
              const auto container =
                  files->containerURLForSecurityApplicationGroupIdentifier("group");
              if (!container) {
                return "no container";
              }
              const auto share = foundation::URLByAppendingPathComponent(container, "Share");
              std::optional<foundation::Error> failed;
              const auto step = [&](std::optional<foundation::Error> error) {
                failed = failed ? failed : std::move(error);
              };
              step(posix::coordinator_factory()()->coordinateWritingItemAtURL(
                  share, platform::NSFileCoordinatorWritingForDeleting, [&](const auto& url) {
                    const std::string path = *foundation::file_system_path(url);
                    // A file into an unnamed file, a folder under a hidden name elsewhere, bytes
                    // under a hidden name here; then all of it removed.
                    constexpr auto kAtomic = platform::NSDataWritingAtomic;
                    step(files->createDirectoryAtURL(url));
                    step(files->copyItemAtPath(folder_.path("file"), path + "/file"));
                    step(files->copyItemAtPath(folder_.path("out/tree"), path + "/tree"));
                    step(files->writeToFile({'a'}, path + "/image.png", kAtomic));
                    step(files->writeToFile({'b'}, path + "/image.png", kAtomic));
                  }));
              return failed ? failed->description() : "";
            }),
            "");
  EXPECT_EQ(test::read_file(folder_.path("out/group/Share/file")), "content");
  EXPECT_EQ(test::read_file(folder_.path("out/group/Share/tree/sub/inner")), "content");
  EXPECT_EQ(test::read_file(folder_.path("out/group/Share/image.png")), "b");
  EXPECT_EQ(confined([&]() -> std::string {
              const auto error = posix::make_file_manager()->removeItemAtURL(
                  foundation::NSURL::file_url(folder_.path("out/group"), true));
              return error ? error->description() : "";
            }),
            "");
  ::unsetenv("QUOLL_GROUP_CONTAINERS");
}

TEST_F(Confine, OnlyTheExecutableStarts) {
  EXPECT_EQ(confined([]() -> std::string {
              if (const int status = run("/bin/true")) {
                return "what is listed ended with " + std::to_string(status);
              }
              return run("/bin/ls") == 127 ? "" : "what is not listed can be started";
            }),
            "");
}

TEST_F(Confine, WhatEveryProgramNeedsStays) {
  EXPECT_EQ(confined([]() -> std::string {
              for (const char* path : {"/dev/urandom", "/usr/bin/env"}) {
                if (!can_open(path, O_RDONLY)) {
                  return path;
                }
              }
              return can_open("/dev/null", O_RDWR) ? "" : "/dev/null";
            }),
            "");
}

TEST_F(Confine, WhatIsOpenStaysOpenAndThreadsAreBound) {
  EXPECT_EQ(test::in_child_process([&]() -> std::string {
              const posix::UniqueFd before(
                  ::open(folder_.path("unlisted").c_str(), O_RDONLY | O_CLOEXEC));
              if (!sandbox::confine({})) {
                return "not confined";
              }
              char byte = 0;
              if (::read(before.get(), &byte, 1) != 1) {
                return "what was open cannot be read";
              }
              bool opened = true;
              std::thread([&] { opened = can_open(folder_.path("unlisted"), O_RDONLY); }).join();
              return opened ? "a thread is free" : "";
            }),
            "");
}

}  // namespace
}  // namespace quoll
