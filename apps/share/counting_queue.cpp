#include "apps/share/counting_queue.h"

#include <exception>

#include "quoll/platform/log.h"

namespace quoll::share {

void CountingQueue::run(Count& count, std::function<void()> block) {
  try {
    block();
  } catch (const std::exception& exception) {
    const auto sentence = foundation::format("the share ended early: %@", exception);
    platform::log_event(
        {sentence, foundation::quoll_error(foundation::kShareEndedError, sentence)});
  }
  block = nullptr;  // release what it holds before the program hears of its end
  const std::lock_guard lock(count.mutex);
  --count.left;
  count.ended.notify_all();
}

void CountingQueue::async(platform::QueuePriority priority, std::function<void()> block) {
  if (priority != platform::QueuePriority::kBackground) {
    queue_->async(priority, std::move(block));
    return;
  }
  {
    const std::lock_guard lock(count_->mutex);
    ++count_->left;
  }
  try {
    queue_->async(priority, [count = count_, block = std::move(block)]() mutable {
      run(*count, std::move(block));
    });
  } catch (...) {
    const std::lock_guard lock(count_->mutex);
    --count_->left;
    throw;
  }
}

bool CountingQueue::wait_for_background(std::chrono::milliseconds at_most) {
  std::unique_lock lock(count_->mutex);
  return count_->ended.wait_for(lock, at_most, [&] { return count_->left == 0; });
}

}  // namespace quoll::share
