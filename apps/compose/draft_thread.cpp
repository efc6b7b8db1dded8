#include "apps/compose/draft_thread.h"

#include <cstring>
#include <exception>
#include <utility>

#include "apps/compose/attempts.h"
#include "apps/compose/draft_writing.h"
#include "apps/compose/folders.h"
#include "apps/compose/hand_over.h"
#include "apps/compose/moment.h"
#include "apps/compose/sweep.h"
#include "quoll/foundation/printable.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

using State = Outcome::State;

Outcome not_written(const TakenDraft& draft, State state, const std::string& reason) {
  Outcome outcome;
  outcome.state = state;
  outcome.path = draft.path();
  outcome.reason = foundation::printable(reason);
  outcome.left_out = draft.left_out();
  return outcome;
}

Outcome set_aside(const TakenDraft& draft, const std::string& reason) {
  draft.set_aside(reason);
  return not_written(draft, State::kSetAside, reason);
}

}  // namespace

DraftThread::DraftThread(WriterServer& writer, Listener listener)
    : writer_(writer), listener_(std::move(listener)), thread_([this] { run(); }) {}

DraftThread::~DraftThread() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void DraftThread::add(std::vector<TakenDraft> drafts, const gio::ActivationTokens& tokens) {
  constexpr std::size_t kMostAtOnce = 10;
  {
    const std::lock_guard lock(mutex_);
    for (TakenDraft& draft : drafts) {
      waiting_.push_back({.draft = std::move(draft), .tokens = tokens, .fields = {}});
    }
    under_way_ += drafts.size();
    is_flood_ = is_flood_ || under_way_ > kMostAtOnce;
  }
  changed_.notify_one();
}

bool DraftThread::busy() const {
  const std::lock_guard lock(mutex_);
  return !has_begun_ || under_way_ != 0 || is_flood_;
}

void DraftThread::run() {
  begin();
  Lock lock(mutex_);
  has_begun_ = true;
  for (;;) {
    end_flood(lock);
    changed_.wait(lock, [&] { return ending_ || !waiting_.empty() || !written_.empty(); });
    std::deque<Job>& jobs = waiting_.empty() ? written_ : waiting_;
    if (jobs.empty()) {
      return;
    }
    Job job = std::move(jobs.front());
    jobs.pop_front();
    work_on(std::move(job), lock);
  }
}

/// What is left from earlier: it is swept, or gone on with.
void DraftThread::begin() {
  try {
    make_folders();
    sweep(present_moment());
    std::vector<TakenDraft> drafts;
    for (const std::string& name : waiting_drafts()) {
      if (auto draft = TakenDraft::lock(name)) {
        drafts.push_back(std::move(*draft));
      }
    }
    add(std::move(drafts), {});
  } catch (const std::exception& exception) {
    platform::log("what waits cannot be gone on with: %@", exception.what());
  }
}

// A draft that failed goes to the end, so that it does not hold up the others.
void DraftThread::work_on(Job job, Lock& lock) {
  bool is_over = true;
  lock.unlock();
  try {
    if (job.is_written) {
      give(job);
    } else {
      is_over = is_over_after_writing(job);
    }
  } catch (const std::exception& exception) {
    platform::log("the draft waits: %@", exception.what());
  }
  lock.lock();
  if (is_over) {
    --under_way_;
  } else {
    (job.is_written ? written_ : waiting_).push_back(std::move(job));
  }
}

bool DraftThread::is_over_after_writing(Job& job) {
  Attempts attempts(job.draft.folder());
  if (attempts.are_enough()) {
    finish(set_aside(job.draft, attempts.reason()));
    return true;
  }
  if (const int error = attempts.begin()) {
    finish(not_written(job.draft, State::kWaits,
                       std::string("it cannot be written: ") + std::strerror(error)));
    return true;
  }
  WritingEnd end = write_draft(job.draft, writer_);
  if (end.answer.end == WriterEnd::kFailed) {
    platform::log("the draft %@ was not written: %@", job.draft.name(), end.answer.reason);
    attempts.failed(end.answer.reason);
    return false;
  }
  attempts.ended();
  if (end.answer.end == WriterEnd::kWritten) {
    job.fields = std::move(end.fields);
    job.is_written = true;
    return false;
  }
  const State state = end.answer.end == WriterEnd::kNoRoom ? State::kWaits : State::kStopped;
  finish(not_written(job.draft, state, end.answer.reason));
  return true;
}

void DraftThread::give(Job& job) {
  const bool in_flood = [&] {
    const std::lock_guard lock(mutex_);
    return is_flood_;
  }();
  if (!in_flood) {
    finish(hand_over(std::move(job.draft), job.fields, job.tokens));
    return;
  }
  ++kept_in_flood_;
  Outcome outcome = keep(std::move(job.draft), "too many drafts came at once");
  outcome.in_flood = true;
  finish(outcome);
}

void DraftThread::finish(const Outcome& outcome) const {
  log_outcome(outcome);
  listener_.finished(outcome);
}

void DraftThread::end_flood(Lock& lock) {
  if (is_flood_ && under_way_ == 0) {
    const std::size_t kept = std::exchange(kept_in_flood_, 0);
    lock.unlock();
    listener_.flood_is_over(kept);
    lock.lock();
    is_flood_ = under_way_ > 0;  // one that came meanwhile still belongs to it
  }
}

}  // namespace quoll::compose
