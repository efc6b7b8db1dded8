#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace quoll::share {

/// Runs blocks one at a time, in the order in which they came, on the installed default queue. It
/// takes one thread, and only while there are blocks. Held by `std::shared_ptr`; any thread may
/// call.
class SerialQueue final : public std::enable_shared_from_this<SerialQueue> {
 public:
  /// Returns at once. What leaves the block is logged and ends this block only. Throws as
  /// `platform::dispatch_async` does when the block could never run.
  void async(std::function<void()> block);

 private:
  void run();

  std::mutex mutex_;
  std::deque<std::function<void()>> blocks_;
  bool is_running_ = false;
};

}  // namespace quoll::share
