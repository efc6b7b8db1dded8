#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <latch>
#include <limits>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "quoll/foundation/exception.h"
#include "quoll/linux/posix/steady_clock.h"
#include "quoll/linux/posix/thread_pool.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"

namespace quoll {
namespace {

using Queue = std::shared_ptr<platform::Queue>;
using platform::QueuePriority;

int nice_of_this_thread() {
  return ::getpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()));
}

class QueueContract : public ::testing::TestWithParam<Queue (*)()> {};

TEST_P(QueueContract, RunsEveryBlockOnOtherThreads) {
  constexpr int kBlocks = 200;
  std::latch done(kBlocks);
  std::atomic<int> here = 0;
  const auto caller = std::this_thread::get_id();
  const Queue queue = GetParam()();
  for (int i = 0; i < kBlocks; ++i) {
    queue->async(i % 20 == 0 ? QueuePriority::kBackground : QueuePriority::kDefault, [&] {
      here += std::this_thread::get_id() == caller ? 1 : 0;
      done.count_down();
    });
  }
  done.wait();
  EXPECT_EQ(here, 0);
}

TEST_P(QueueContract, ABlockMayQueueBlocks) {
  std::latch done(1);
  const Queue queue = GetParam()();
  queue->async(QueuePriority::kBackground,
               [&] { queue->async(QueuePriority::kDefault, [&] { done.count_down(); }); });
  done.wait();
}

TEST_P(QueueContract, APlatformExceptionEndsItsBlockOnlyAndIsLogged) {
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  {
    const Queue queue = GetParam()();
    std::latch done(2);
    for (const auto priority : {QueuePriority::kDefault, QueuePriority::kBackground}) {
      queue->async(priority, [&done] {
        done.count_down();
        foundation::raise_range("beyond the end");
      });
    }
    done.wait();
    std::latch again(1);
    queue->async(QueuePriority::kDefault, [&] { again.count_down(); });
    again.wait();
  }
  ASSERT_EQ(log->lines().size(), 2U);
  EXPECT_NE(log->lines()[0].find("beyond the end"), std::string::npos);
}

TEST_P(QueueContract, TheLastOwnerWaitsForWhatIsQueued) {
  std::atomic<int> ran = 0;
  {
    const Queue queue = GetParam()();
    for (int i = 0; i < 50; ++i) {
      queue->async(i == 0 ? QueuePriority::kBackground : QueuePriority::kDefault, [&] { ++ran; });
    }
  }
  EXPECT_EQ(ran, 50);
}

INSTANTIATE_TEST_SUITE_P(Queues, QueueContract,
                         ::testing::Values(
                             +[]() -> Queue { return std::make_shared<test::ThreadQueue>(); },
                             +[]() -> Queue { return posix::make_thread_pool(); }));

/// A gate at which background blocks wait.
class Gate {
 public:
  void pass() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }
  void wait_for(int waiting) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return waiting_ == waiting; });
  }
  void open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int waiting_ = 0;
  bool open_ = false;
};

TEST(ThreadPool, BlocksThatWaitDoNotKeepOthersFromRunning) {
  Gate gate;
  const Queue queue = posix::make_thread_pool();
  constexpr int kWaiting = 20;  // more than any pool has threads
  for (int i = 0; i < kWaiting; ++i) {
    queue->async(QueuePriority::kBackground, [&] { gate.pass(); });
  }
  gate.wait_for(kWaiting);
  std::latch done(1);
  queue->async(QueuePriority::kDefault, [&] { done.count_down(); });
  done.wait();
  gate.open();
}

TEST(ThreadPool, FourBlocksRunAtATime) {
  Gate gate;
  std::atomic<int> running = 0;
  const Queue queue = posix::make_thread_pool();
  for (int i = 0; i < 20; ++i) {
    queue->async(QueuePriority::kDefault, [&] {
      ++running;
      gate.pass();
    });
  }
  while (running < 4) {
    std::this_thread::yield();
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // in which a fifth would begin
  EXPECT_EQ(running, 4);
  gate.open();
}

TEST(ThreadPool, OnlyBackgroundBlocksAreSlow) {
  const int usual = nice_of_this_thread();
  std::atomic<int> background = usual;
  std::atomic<int> queued_by_background = usual + 1;
  std::latch done(1);
  const Queue queue = posix::make_thread_pool();
  queue->async(QueuePriority::kBackground, [&] {
    background = nice_of_this_thread();
    queue->async(QueuePriority::kDefault, [&] {
      queued_by_background = nice_of_this_thread();
      done.count_down();
    });
  });
  done.wait();
  EXPECT_GT(background, usual);
  EXPECT_EQ(queued_by_background, usual) << "a thread inherits the priority of its maker";
}

TEST(ThreadPool, StartsNoThreadBeforeTheFirstBlock) {
  const auto threads = [] {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
  };
  const auto before = threads();
  const Queue queue = posix::make_thread_pool();
  EXPECT_LE(threads(), before);
}

TEST(ThreadPool, AnythingThrownIsLoggedInOneLine) {
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  Queue queue = posix::make_thread_pool();
  queue->async(QueuePriority::kDefault, [] { throw std::runtime_error("a fault"); });
  queue->async(QueuePriority::kDefault, [] { throw 1; });
  queue->async(QueuePriority::kDefault, nullptr);
  queue.reset();
  EXPECT_EQ(log->lines().size(), 3U);
}

TEST(ThreadPool, ABlockMayLetGoOfTheQueueLast) {
  std::latch done(1);
  std::latch released(1);
  Queue queue = posix::make_thread_pool();
  queue->async(QueuePriority::kDefault, [&done, &released, held = queue]() mutable {
    released.wait();
    held.reset();
    done.count_down();
  });
  queue.reset();
  released.count_down();
  done.wait();
}

TEST(SteadyClock, SleepsAtLeastAsLongAsAsked) {
  const auto clock = posix::make_clock();
  const auto start = std::chrono::steady_clock::now();
  clock->sleep(0.02);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(SteadyClock, DoesNotSleepForNothing) {
  const auto clock = posix::make_clock();
  for (const double seconds : {0.0, -1.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    clock->sleep(seconds);  // returns at all
  }
}

}  // namespace
}  // namespace quoll
