// What every coordinator keeps, the one of this system and the one of the tests.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

#include "quoll/linux/posix/coordinator.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/thread_coordinator.h"

namespace quoll {
namespace {

using foundation::Error;
using foundation::NSURL;
using Url = std::shared_ptr<NSURL>;
using Factory = std::function<std::unique_ptr<platform::NSFileCoordinator>()>;

class CoordinatorContract : public ::testing::TestWithParam<Factory (*)()> {
 protected:
  CoordinatorContract() {
    ::setenv("QUOLL_GROUP_CONTAINERS", folder_.path().c_str(), 1);
    std::filesystem::create_directories(path("/SharedData/Share"));
  }
  ~CoordinatorContract() override { ::unsetenv("QUOLL_GROUP_CONTAINERS"); }

  [[nodiscard]] std::string path(const std::string& inside) const {
    return folder_.path("group" + inside);
  }
  [[nodiscard]] Url url(const std::string& inside) const {
    return NSURL::file_url(path(inside), false);
  }
  std::optional<Error> coordinate(const Url& item,
                                  const std::function<void(const Url&)>& accessor) {
    return factory_()->coordinateWritingItemAtURL(
        item, platform::NSFileCoordinatorWritingForDeleting, accessor);
  }

  test::TemporaryFolder folder_;
  Factory factory_ = GetParam()();
};

TEST_P(CoordinatorContract, RunsTheAccessorHereWithTheLocationAsGiven) {
  const Url item = NSURL::URLWithString("file://" + path("/SharedData/./x/../Share/"));
  const auto caller = std::this_thread::get_id();
  int ran = 0;
  EXPECT_FALSE(coordinate(item, [&](const Url& given) {
    ++ran;
    EXPECT_EQ(given, item);
    EXPECT_EQ(std::this_thread::get_id(), caller);
  }));
  EXPECT_EQ(ran, 1);
}

TEST_P(CoordinatorContract, NoLocationIsAnError) {
  EXPECT_TRUE(coordinate(nullptr, [](const Url&) { FAIL(); }));
}

TEST_P(CoordinatorContract, ExceptionsPassAndFreeTheLocks) {
  EXPECT_THROW(
      coordinate(url("/SharedData"), [](const Url&) { throw std::runtime_error("a fault"); }),
      std::runtime_error);
  EXPECT_FALSE(coordinate(url("/SharedData"), [](const Url&) {}));
}

TEST_P(CoordinatorContract, SiblingsDoNotWaitForEachOther) {
  bool ran = false;
  EXPECT_FALSE(coordinate(url("/SharedData/Share"), [&](const Url&) {
    EXPECT_FALSE(coordinate(url("/SharedData/Contacts"), [&](const Url&) { ran = true; }));
  }));
  EXPECT_TRUE(ran);
}

TEST_P(CoordinatorContract, ThreadsExcludeEachOther) {
  // An item, and a folder above it: each excludes the other.
  const std::vector<std::string> items = {"/SharedData/Share", "/SharedData"};
  std::atomic<int> inside = 0;
  std::atomic<int> overlaps = 0;
  int count = 0;  // guarded by the coordinator alone
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < 8; ++i) {
    threads.emplace_back([&, item = items[i % 2]] {
      for (int round = 0; round < 50; ++round) {
        coordinate(url(item), [&](const Url&) {
          overlaps += inside.fetch_add(1);
          ++count;
          inside.fetch_sub(1);
        });
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(overlaps, 0);
  EXPECT_EQ(count, 400);
}

INSTANTIATE_TEST_SUITE_P(Coordinators, CoordinatorContract,
                         ::testing::Values(
                             +[] { return posix::coordinator_factory(); },
                             +[] { return test::thread_coordinators(); }));

}  // namespace
}  // namespace quoll
