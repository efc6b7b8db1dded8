#pragma once

#include <mutex>

namespace quoll::foundation {

/// The recursive lock of an object, the one behind the platform's synchronized blocks. An object
/// that can be locked derives from it. Each object has a lock of its own.
class Monitor {
 public:
  Monitor() = default;
  Monitor(const Monitor&) = delete;
  Monitor& operator=(const Monitor&) = delete;

  /// Waits for the lock and holds it as long as the result lives. The same thread may take it
  /// again.
  [[nodiscard]] std::unique_lock<std::recursive_mutex> synchronized() const {
    return std::unique_lock(mutex_);
  }

 protected:
  ~Monitor() = default;

 private:
  mutable std::recursive_mutex mutex_;
};

}  // namespace quoll::foundation
