#include "apps/console/operations/answer_timer.h"

#include <algorithm>
#include <utility>

namespace quoll::console {

AnswerTimer::~AnswerTimer() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void AnswerTimer::after(double seconds, std::function<void()> block) {
  constexpr double kYear = 365.0 * 24 * 3600;
  const auto wait = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(std::clamp(seconds, 0.0, kYear)));
  const std::lock_guard lock(mutex_);
  waiting_.emplace(std::chrono::steady_clock::now() + wait, std::move(block));
  if (!thread_.joinable()) {
    thread_ = std::thread([this] { run(); });
  }
  changed_.notify_all();
}

void AnswerTimer::run() {
  std::unique_lock lock(mutex_);
  while (!ending_) {
    if (waiting_.empty()) {
      changed_.wait(lock);
    } else if (const Moment next = waiting_.begin()->first;
               next > std::chrono::steady_clock::now()) {
      changed_.wait_until(lock, next);
    } else {
      auto due = waiting_.extract(waiting_.begin());
      lock.unlock();
      due.mapped()();
      due = {};
      lock.lock();
    }
  }
}

}  // namespace quoll::console
