#include "apps/share/counting_queue.h"

#include <gtest/gtest.h>

#include "tests/support/recorders.h"

namespace quoll::share {
namespace {

using namespace std::chrono_literals;

TEST(CountingQueue, WaitsForBackgroundBlocksOnly) {
  const auto held = std::make_shared<test::HeldQueue>();
  CountingQueue queue(held);
  queue.async(platform::QueuePriority::kDefault, [] {});
  EXPECT_TRUE(queue.wait_for_background(0ms));
  queue.async(platform::QueuePriority::kBackground, [] {});
  EXPECT_FALSE(queue.wait_for_background(0ms));
  held->run();
  EXPECT_TRUE(queue.wait_for_background(0ms));
}

TEST(CountingQueue, ABlockThatIsRefusedIsNotWaitedFor) {
  class Refusing final : public platform::Queue {
   public:
    void async(platform::QueuePriority /*priority*/, std::function<void()> /*block*/) override {
      throw std::runtime_error("no thread");
    }
  };
  CountingQueue queue(std::make_shared<Refusing>());
  EXPECT_THROW(queue.async(platform::QueuePriority::kBackground, [] {}), std::runtime_error);
  EXPECT_TRUE(queue.wait_for_background(0ms));
}

TEST(CountingQueue, WhatABlockHoldsGoesBeforeItHasEnded) {
  auto threads = std::make_shared<test::ThreadQueue>();
  CountingQueue queue(threads);
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = held;
  queue.async(platform::QueuePriority::kBackground, [held = std::move(held)] {});
  ASSERT_TRUE(queue.wait_for_background(60s));
  EXPECT_TRUE(watched.expired());
}

TEST(CountingQueue, WhatLeavesABlockIsLogged) {
  auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  auto threads = std::make_shared<test::ThreadQueue>();
  CountingQueue queue(threads);
  queue.async(platform::QueuePriority::kBackground, [] { throw std::bad_alloc(); });
  ASSERT_TRUE(queue.wait_for_background(60s));
  const auto events = log->events();
  ASSERT_EQ(events.size(), 1U);
  EXPECT_TRUE(events[0].text.starts_with("the share ended early: "));
  EXPECT_EQ(events[0].error->code, foundation::kShareEndedError);
}

}  // namespace
}  // namespace quoll::share
