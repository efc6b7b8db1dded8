#include "quoll/recording/event_recorder.h"

#include <utility>

namespace quoll::recording {

namespace {

std::shared_ptr<EventRecorder>& of_this_thread() {
  thread_local std::shared_ptr<EventRecorder> recorder;
  return recorder;
}

}  // namespace

EventRecorder::Scope::Scope(std::shared_ptr<EventRecorder> recorder)
    : before_(std::exchange(of_this_thread(), std::move(recorder))) {}

EventRecorder::Scope::~Scope() {
  of_this_thread() = std::move(before_);
}

std::shared_ptr<EventRecorder> EventRecorder::current() {
  return of_this_thread();
}

void EventRecorder::record(Event event) {
  const std::lock_guard lock(mutex_);
  if (!is_closed_) {
    events_.push_back(std::move(event));
  }
}

std::vector<Event> EventRecorder::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

std::vector<Event> EventRecorder::close() {
  const std::lock_guard lock(mutex_);
  is_closed_ = true;
  return std::exchange(events_, {});
}

void record(Event event) {
  if (const auto& recorder = of_this_thread()) {
    recorder->record(std::move(event));
  }
}

}  // namespace quoll::recording
