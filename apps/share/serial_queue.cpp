#include "apps/share/serial_queue.h"

#include <utility>

#include "quoll/platform/queue.h"

namespace quoll::share {

void SerialQueue::async(std::function<void()> block) {
  {
    const std::lock_guard lock(mutex_);
    blocks_.push_back(std::move(block));
    if (std::exchange(is_running_, true)) {
      return;
    }
  }
  try {
    platform::dispatch_async(platform::QueuePriority::kDefault,
                             [self = shared_from_this()] { self->run(); });
  } catch (...) {
    const std::lock_guard lock(mutex_);
    blocks_.pop_front();  // nothing ran, so it is the block of this call
    is_running_ = false;
    throw;
  }
}

void SerialQueue::run() {
  std::unique_lock lock(mutex_);
  while (!blocks_.empty()) {
    std::function<void()> block = std::move(blocks_.front());
    blocks_.pop_front();
    lock.unlock();
    platform::run_block(block);
    block = nullptr;  // what it holds is let go outside the lock
    lock.lock();
  }
  is_running_ = false;
}

}  // namespace quoll::share
