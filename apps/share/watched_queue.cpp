#include "apps/share/watched_queue.h"

#include <exception>

#include "quoll/platform/log.h"

namespace quoll::share {

void WatchedQueue::run(Blocks& blocks, std::function<void()> block) {
  const Witness::Scope scope(blocks.witness);
  try {
    block();
  } catch (const std::exception& exception) {
    const auto sentence = foundation::format("the share ended early: %@", exception);
    platform::log_event(
        {sentence, foundation::quoll_error(foundation::kShareEndedError, sentence)});
  }
  block = nullptr;  // what it holds goes before the host hears that it has ended
  const std::lock_guard lock(blocks.mutex);
  --blocks.left;
  blocks.ended.notify_all();
}

void WatchedQueue::async(platform::QueuePriority priority, std::function<void()> block) {
  if (priority != platform::QueuePriority::kBackground) {
    queue_->async(priority, std::move(block));
    return;
  }
  {
    const std::lock_guard lock(blocks_->mutex);
    ++blocks_->left;
  }
  queue_->async(priority, [blocks = blocks_, block = std::move(block)]() mutable {
    run(*blocks, std::move(block));
  });
}

bool WatchedQueue::wait_for_background(std::chrono::milliseconds at_most) {
  std::unique_lock lock(blocks_->mutex);
  return blocks_->ended.wait_for(lock, at_most, [&] { return blocks_->left == 0; });
}

}  // namespace quoll::share
