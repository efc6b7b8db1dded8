#include "apps/compose/draft_thread.h"

#include <exception>
#include <utility>

#include "quoll/platform/log.h"

namespace quoll::compose {

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
  return working_ || !waiting_.empty() || !written_.empty();
}

void DraftThread::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [&] { return ending_ || !waiting_.empty() || !written_.empty(); });
    if (!waiting_.empty()) {
      Job job = std::move(waiting_.front());
      waiting_.pop_front();
      working_ = true;
      lock.unlock();
      std::optional<Offer> offer = written(std::move(job));
      lock.lock();
      if (offer) {
        written_.push_back(std::move(*offer));
      }
    } else if (!written_.empty()) {
      Offer offer = std::move(written_.front());
      written_.pop_front();
      working_ = true;
      lock.unlock();
      hand(std::move(offer));
      lock.lock();
    } else {
      return;
    }
    working_ = false;
  }
}

std::optional<DraftThread::Offer> DraftThread::written(Job job) {
  try {
    return Offer{.draft = write(std::move(job.draft)), .tokens = std::move(job.tokens)};
  } catch (const std::exception& exception) {
    platform::log("the draft is lost: %@", exception.what());
    notices_.add(refusal_notice(exception.what()));
    return std::nullopt;
  }
}

void DraftThread::hand(Offer offer) {
  try {
    if (auto notice = notice_of(hand_over(std::move(offer.draft), offer.tokens))) {
      notices_.add(std::move(*notice));
    }
  } catch (const std::exception& exception) {
    platform::log("the draft is kept: %@", exception.what());
  }
}

}  // namespace quoll::compose
