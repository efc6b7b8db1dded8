#include "apps/quoll-compose/draft_thread.h"

#include <exception>
#include <utility>

#include "quoll/platform/log.h"

namespace quoll::receiver {

DraftThread::~DraftThread() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void DraftThread::finish_later(std::unique_ptr<ReceivedDraft> draft, gio::ActivationTokens tokens) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({std::move(draft), std::move(tokens)});
  }
  changed_.notify_one();
}

bool DraftThread::busy() const {
  const std::lock_guard lock(mutex_);
  return working_ || !waiting_.empty();
}

bool DraftThread::has_notices() const {
  const std::lock_guard lock(mutex_);
  return !notices_.empty();
}

std::vector<Notice> DraftThread::take_notices() {
  const std::lock_guard lock(mutex_);
  return std::exchange(notices_, {});
}

void DraftThread::tell(const std::optional<Notice>& notice) {
  if (!notice) {
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    notices_.push_back(*notice);
  }
  noticed_();
}

void DraftThread::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [&] { return ending_ || !waiting_.empty(); });
    if (waiting_.empty()) {
      return;
    }
    Job job = std::move(waiting_.front());
    waiting_.pop_front();
    working_ = true;
    lock.unlock();
    try {
      tell(notice_of(finish(std::move(job.draft), job.tokens)));
    } catch (const std::exception& exception) {
      platform::log("the draft is lost: %@", exception.what());
      tell(Notice{.summary = "There is no draft", .body = exception.what()});
    }
    lock.lock();
    working_ = false;
  }
}

}  // namespace quoll::receiver
