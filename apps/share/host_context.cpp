#include "apps/share/host_context.h"

namespace quoll::share {

void HostContext::completeRequestReturningItems(const Items& items,
                                                std::function<void(bool expired)> handler) {
  {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(is_ended_, true)) {
      returned_ = items;
    }
  }
  if (handler) {
    handler(false);
  }
}

void HostContext::cancelRequestWithError(const foundation::Error& error) {
  const std::lock_guard lock(mutex_);
  if (!std::exchange(is_ended_, true)) {
    cancellation_ = error;
  }
}

bool HostContext::is_ended() const {
  const std::lock_guard lock(mutex_);
  return is_ended_;
}

std::optional<foundation::Error> HostContext::cancellation() const {
  const std::lock_guard lock(mutex_);
  return cancellation_;
}

HostContext::Items HostContext::returned() const {
  const std::lock_guard lock(mutex_);
  return returned_;
}

}  // namespace quoll::share
