#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "apps/share/witness.h"
#include "quoll/platform/queue.h"

namespace quoll::share {

/// A queue that counts its background blocks, so that the host can stay until the last has ended.
/// Whatever leaves such a block is logged and ends that block only: the host still has to report.
class WatchedQueue final : public platform::Queue {
 public:
  explicit WatchedQueue(std::shared_ptr<platform::Queue> queue) : queue_(std::move(queue)) {}

  void async(platform::QueuePriority priority, std::function<void()> block) override;

  /// Waits until no background block is left, but not longer than this; true when none is left.
  [[nodiscard]] bool wait_for_background(std::chrono::milliseconds at_most);

  /// What the background blocks logged, but for what others witnessed.
  [[nodiscard]] const Witness& witness() const { return blocks_->witness; }

 private:
  /// Outlives the queue when a block does.
  struct Blocks {
    std::mutex mutex;
    std::condition_variable ended;
    int left = 0;
    Witness witness;
  };

  static void run(Blocks& blocks, std::function<void()> block);

  std::shared_ptr<platform::Queue> queue_;
  std::shared_ptr<Blocks> blocks_ = std::make_shared<Blocks>();
};

}  // namespace quoll::share
