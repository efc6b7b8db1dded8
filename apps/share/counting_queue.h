#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "quoll/platform/queue.h"

namespace quoll::share {

/// A queue that counts its background blocks, so that the program can wait for the last of them. An
/// exception that leaves such a block is logged and ends only that block: the program still has to
/// report.
class CountingQueue final : public platform::Queue {
 public:
  explicit CountingQueue(std::shared_ptr<platform::Queue> queue) : queue_(std::move(queue)) {}

  void async(platform::QueuePriority priority, std::function<void()> block) override;

  /// Waits until no background block is left, but at most for `at_most`. True when none is left.
  [[nodiscard]] bool wait_for_background(std::chrono::milliseconds at_most);

 private:
  /// Shared with the blocks, because a block may outlive the queue.
  struct Count {
    std::mutex mutex;
    std::condition_variable ended;
    int left = 0;
  };

  static void run(Count& count, std::function<void()> block);

  std::shared_ptr<platform::Queue> queue_;
  std::shared_ptr<Count> count_ = std::make_shared<Count>();
};

}  // namespace quoll::share
