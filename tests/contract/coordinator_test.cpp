#include "quoll/linux/posix/coordinator.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "quoll/linux/posix/files.h"
#include "tests/contract/child_process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

using foundation::Error;
using foundation::NSURL;
using Url = std::shared_ptr<NSURL>;

class Coordinator : public ::testing::Test {
 protected:
  Coordinator() {
    ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path().c_str(), 1);
    std::filesystem::create_directories(path("/SharedData/Share"));
  }
  ~Coordinator() override { ::unsetenv("QUOLL_GROUP_CONTAINERS"); }

  [[nodiscard]] std::string path(const std::string& inside) const {
    return folder_.path("group" + inside);
  }
  [[nodiscard]] Url url(const std::string& inside) const {
    return NSURL::file_url(path(inside), false);
  }
  std::optional<Error> coordinate(const Url& item,
                                  const std::function<void(const Url&)>& accessor) {
    return posix::coordinator_factory()()->coordinateWritingItemAtURL(
        item, platform::NSFileCoordinatorWritingForDeleting, accessor);
  }

  test::TemporaryFolder folder_;
};

TEST(LockFileName, IsWrittenDownForOthers) {
  EXPECT_EQ(posix::lock_file_name("/"), "%2F.lock");
  EXPECT_EQ(posix::lock_file_name("/SharedData"), "%2FSharedData.lock");
  EXPECT_EQ(posix::lock_file_name("/SharedData/Share"), "%2FSharedData%2FShare.lock");
  EXPECT_EQ(posix::lock_file_name("/a b-._~\xff"), "%2Fa%20b-._~%FF.lock");
  // 3 + 247 + 5 bytes are just the longest name there is.
  EXPECT_EQ(posix::lock_file_name("/" + std::string(247, 'a')).size(), 255U);
  const std::string hashed = posix::lock_file_name("/" + std::string(248, 'a'));
  EXPECT_EQ(hashed, "he04490fcd04a050d.lock");
}

TEST_F(Coordinator, TheLockFilesArePrivateAndStay) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(coordinate(url("/SharedData/Share"), [](const Url&) {}));
  }
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path("/.locks"))) {
    names.push_back(entry.path().filename());
    EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600));
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"%2F.lock", "%2FSharedData%2FShare.lock",
                                             "%2FSharedData.lock"}));
  EXPECT_EQ(std::filesystem::status(path("/.locks")).permissions(), std::filesystem::perms(0700));
}

TEST_F(Coordinator, RefusesWhatIsNotInsideAContainer) {
  struct Row {
    Url item;
    const char* why;
  };
  const Row rows[] = {
      {nullptr, "no location"},
      {url(""), "the container itself"},
      {url("/SharedData/.."), "the container itself, in other words"},
      {url("/.locks"), "the locks must not be deleted"},
      {url("/SharedData/../.locks/x"), "nor one of them"},
      {NSURL::file_url(folder_.path(), true), "the folder of all containers"},
      {NSURL::file_url("/tmp", true), "another folder"},
      {NSURL::file_url(folder_.path("none/x"), false), "a container that is not there"},
      {NSURL::URLWithString("http://h" + path("/x")), "no file"},
  };
  for (const Row& row : rows) {
    bool ran = false;
    EXPECT_TRUE(coordinate(row.item, [&](const Url&) { ran = true; })) << row.why;
    EXPECT_FALSE(ran) << row.why;
  }
  EXPECT_FALSE(coordinate(url("/.lockstep"), [](const Url&) {})) << "begins alike only";
  EXPECT_FALSE(coordinate(url("/" + std::string(300, 'n')), [](const Url&) {}))
      << "a name too long for a file can be locked";
}

TEST_F(Coordinator, IsNotToBeHadWithoutAnyContainer) {
  ::setenv("QUOLL_GROUP_CONTAINERS", "", 1);
  EXPECT_TRUE(coordinate(url("/SharedData"), [](const Url&) { FAIL(); }));
}

TEST_F(Coordinator, ProcessesThatStageExcludeEachOther) {
  constexpr int kProcesses = 4;
  constexpr int kRounds = 40;
  folder_.write("source", "content");
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      const auto files = posix::make_file_manager();
      int failures = 0;
      for (int round = 0; round < kRounds; ++round) {
        coordinate(url("/SharedData/Share"), [&](const Url& item) {
          // Only one that is alone finds the next free number free all the way.
          const std::string staged = *foundation::file_system_path(item) + "/file_";
          int number = 0;
          while (files->fileExistsAtPath(staged + std::to_string(number))) {
            ++number;
          }
          failures += files->copyItemAtPath(folder_.path("source"), staged + std::to_string(number))
                          ? 1
                          : 0;
        });
      }
      ::_exit(failures == 0 ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  }
  const std::filesystem::directory_iterator staged(path("/SharedData/Share"));
  EXPECT_EQ(std::distance(begin(staged), end(staged)), kProcesses * kRounds);
}

TEST_F(Coordinator, AKilledHolderFreesItsLocks) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const posix::UniqueFd in(ends[0]);
  posix::UniqueFd out(ends[1]);
  const pid_t child = ::fork();
  if (child == 0) {
    coordinate(url("/SharedData"), [&](const Url&) {
      const bool told = ::write(out.get(), "x", 1) == 1;
      while (told) {
        ::pause();
      }
    });
    ::_exit(1);
  }
  out.reset();
  char told = 0;
  ASSERT_EQ(::read(in.get(), &told, 1), 1) << "the child holds the lock";

  std::atomic<bool> killed = false;
  bool waited = false;
  std::thread waiting(
      [&] { coordinate(url("/SharedData/Share"), [&](const Url&) { waited = killed; }); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  killed = true;
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  waiting.join();
  EXPECT_TRUE(waited) << "the access was granted while the child held the lock";
}

}  // namespace
}  // namespace quoll
