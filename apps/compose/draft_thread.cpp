#include "apps/compose/draft_thread.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

#include "apps/compose/attempts.h"
#include "apps/compose/compose_error.h"
#include "apps/compose/draft_writing.h"
#include "apps/compose/folders.h"
#include "apps/compose/hand_over.h"
#include "apps/compose/moment.h"
#include "apps/compose/noted_reason.h"
#include "apps/compose/recent_moments.h"
#include "apps/compose/room.h"
#include "apps/compose/sweep.h"
#include "quoll/foundation/printable.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

using State = Outcome::State;

constexpr std::size_t kMostAtOnce = 10;

Outcome waits(const std::string& draft, const std::string& reason) {
  Outcome outcome;
  outcome.state = State::kWaits;
  outcome.path = taken_folder() + "/" + draft;
  outcome.reason = foundation::printable(reason);
  return outcome;
}

Outcome not_written(const TakenDraft& draft, State state, const std::string& reason) {
  Outcome outcome = waits(draft.name(), reason);
  outcome.state = state;
  outcome.left_out = draft.left_out();
  return outcome;
}

/// A draft at which programs have ended might end this one too.
bool is_suspicious(const std::string& draft) {
  try {
    const posix::UniqueFd folder = open_folder(taken_folder() + "/" + draft);
    return Attempts(folder.get()).are_suspicious();
  } catch (const ComposeError&) {
    return true;  // told when its turn comes
  }
}

Outcome set_aside(const TakenDraft& draft, const std::string& reason) {
  draft.set_aside(reason);
  return not_written(draft, State::kSetAside, reason);
}

}  // namespace

DraftThread::DraftThread(WriterServer& writer, Earlier earlier, Listener listener)
    : writer_(writer),
      earlier_(earlier),
      listener_(std::move(listener)),
      thread_([this] { run(); }) {}

DraftThread::~DraftThread() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void DraftThread::add(std::vector<TakenDraft> drafts, const gio::ActivationTokens& tokens) {
  {
    const std::lock_guard lock(mutex_);
    for (TakenDraft& draft : drafts) {
      const std::string name = draft.name();
      wait({.name = name, .draft = std::move(draft), .tokens = tokens, .fields = {}});
    }
    under_way_ += drafts.size();
    is_flood_ = is_flood_ || under_way_ > kMostAtOnce;
  }
  changed_.notify_one();
}

// Each lock needs a descriptor, of which there are few.
void DraftThread::wait(Job job) {
  if (waiting_.size() >= kMostAtOnce) {
    job.draft.reset();
  }
  waiting_.push_back(std::move(job));
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
    // In a flood none waits for the others: a written draft has a lock until it is kept.
    const bool has_written = is_flood_ && !written_.empty();
    std::deque<Job>& jobs = has_written || waiting_.empty() ? written_ : waiting_;
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
    if (earlier_ == Earlier::kAreLeft) {
      return;
    }
    std::vector<std::string> names = waiting_drafts();
    std::stable_partition(names.begin(), names.end(), std::not_fn(is_suspicious));
    for (const std::string& name : names) {
      go_on_with(name);
    }
    const std::lock_guard lock(mutex_);
    is_flood_ = is_flood_ || names.size() > kMostAtOnce;
  } catch (const std::exception& exception) {
    platform::log("what waits cannot be gone on with: %@", exception.what());
  }
}

/// Unless it is worked on. A draft of this program that has no lock is among those that wait.
void DraftThread::go_on_with(const std::string& name) {
  Job job{.name = name, .draft = {}, .tokens = {}, .is_earlier = true};
  try {
    if (!lock_draft(job)) {
      return;
    }
  } catch (const ComposeError&) {
    // Told when its turn comes.
  }
  const std::lock_guard lock(mutex_);
  if (std::ranges::find(waiting_, name, &Job::name) == waiting_.end()) {
    wait(std::move(job));
    ++under_way_;
  }
}

/// False when somebody else works on it, or has done so.
bool DraftThread::lock_draft(Job& job) {
  if (!job.draft) {
    job.draft = TakenDraft::lock(job.name);
    if (job.draft && why_aside(job.name)) {
      job.draft.reset();
    }
  }
  return job.draft.has_value();
}

// A draft that failed goes to the end, so that it does not hold up the others.
void DraftThread::work_on(Job job, Lock& lock) {
  bool is_over = true;
  lock.unlock();
  try {
    if (job.is_written) {
      give(job);
    } else if (lock_draft(job)) {
      is_over = is_over_after_writing(job);
    }
  } catch (const std::exception& exception) {
    finish(job, waits(job.name, exception.what()));
  }
  lock.lock();
  if (is_over) {
    --under_way_;
  } else if (job.is_written) {
    written_.push_back(std::move(job));
  } else {
    wait(std::move(job));
  }
}

bool DraftThread::is_over_after_writing(Job& job) {
  const TakenDraft& draft = *job.draft;
  if (const auto reason = why_never(draft.folder())) {
    finish(job, set_aside(draft, *reason));
    return true;
  }
  Attempts attempts(draft.folder());
  if (attempts.are_enough()) {
    finish(job, set_aside(draft, attempts.reason()));
    return true;
  }
  if (const int error = attempts.begin()) {
    finish(job, not_written(draft, State::kWaits,
                            std::string("it cannot be written: ") + std::strerror(error)));
    return true;
  }
  WritingEnd end = write_draft(draft, writer_);
  if (end.answer.end == WriterEnd::kFailed) {
    platform::log("the draft %@ was not written: %@", draft.name(), end.answer.reason);
    attempts.failed(end.answer.reason);
    return false;
  }
  attempts.ended();
  if (end.answer.end == WriterEnd::kWritten) {
    job.fields = std::move(end.fields);
    job.is_written = true;
    return false;
  }
  const State state = end.answer.end == WriterEnd::kNotNow ? State::kWaits : State::kStopped;
  finish(job, not_written(draft, state, end.answer.reason));
  return true;
}

void DraftThread::give(Job& job) {
  bool may = false;
  ComposeError reason("too many drafts came at once");
  bool in_flood = true;
  try {
    may = may_offer();
  } catch (const ComposeError& unknown) {
    reason = unknown;  // how many came is not known, so there may be too many
    in_flood = ++kept_unknown_ > kMostAtOnce;
  }
  if (may) {
    finish(job, hand_over(std::move(*job.draft), job.fields, job.tokens));
    return;
  }
  has_kept_ = has_kept_ || in_flood;
  Outcome outcome = keep(std::move(*job.draft), reason);
  outcome.in_flood = in_flood;
  finish(job, std::move(outcome));
}

/// Without a desktop nothing is offered.
bool DraftThread::may_offer() {
  Lock lock(mutex_);
  if (is_flood_ || !has_desktop()) {
    return !is_flood_;
  }
  lock.unlock();
  const bool may = note_unless_frequent(Moments::kOffers, kMostAtOnce);
  lock.lock();
  is_flood_ = is_flood_ || !may;
  return may;
}

void DraftThread::finish(const Job& job, Outcome outcome) const {
  outcome.is_earlier = job.is_earlier;
  if (outcome.state == State::kWaits || outcome.state == State::kStopped) {
    note_reason(outcome.path, outcome.reason);
  } else if (outcome.state == State::kKept) {
    note_reason(given_folder() + "/" + job.name, outcome.reason);
  }
  log_outcome(outcome);
  listener_.finished(outcome);
}

void DraftThread::end_flood(Lock& lock) {
  if (is_flood_ && under_way_ == 0) {
    lock.unlock();
    if (std::exchange(has_kept_, false)) {
      tell_of_flood();
    }
    lock.lock();
    is_flood_ = under_way_ > 0;  // one that came meanwhile still belongs to it
  }
}

void DraftThread::tell_of_flood() const {
  try {
    if (note_unless_frequent(Moments::kFloodsToldOf, 1)) {
      listener_.flood_is_over();
    }
  } catch (const std::exception& exception) {
    platform::log("many drafts are kept: %@", exception.what());
  }
}

}  // namespace quoll::compose
