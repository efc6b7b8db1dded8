#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace quoll::console {

/// Runs blocks at later moments, on a thread of its own that is started with the first block. A
/// block must be short, such as one that adds work to a queue. The destructor drops the blocks that
/// still wait.
class AnswerTimer final {
 public:
  AnswerTimer() = default;
  AnswerTimer(const AnswerTimer&) = delete;
  AnswerTimer& operator=(const AnswerTimer&) = delete;
  /// Must not be called from a block.
  ~AnswerTimer();

  /// Runs `block` after that many seconds, a year at most. Any thread may call.
  void after(double seconds, std::function<void()> block);

 private:
  using Moment = std::chrono::steady_clock::time_point;

  void run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::multimap<Moment, std::function<void()>> waiting_;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace quoll::console
