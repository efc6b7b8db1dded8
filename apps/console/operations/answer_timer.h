#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace quoll::console {

/// Runs blocks later, on one thread of its own that exists from the first block on. A block is
/// short: it hands work to a queue. What is still waiting when the timer ends is dropped.
class AnswerTimer final {
 public:
  AnswerTimer() = default;
  AnswerTimer(const AnswerTimer&) = delete;
  AnswerTimer& operator=(const AnswerTimer&) = delete;
  /// Never from a block of its own.
  ~AnswerTimer();

  /// Any thread may call. `seconds` beyond a year are a year.
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
