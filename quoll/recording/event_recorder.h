#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "quoll/recording/event.h"

namespace quoll::recording {

/// The events of one piece of work, in order, whichever threads do it. A thread works on it while a
/// `Scope` with its recorder lives on that thread; the recording ports then note what happens. Any
/// thread may call.
class EventRecorder {
 public:
  /// Until it is destroyed, events of this thread go to `recorder`, and then to the one before.
  /// Null: nothing is recorded meanwhile.
  class Scope {
   public:
    explicit Scope(std::shared_ptr<EventRecorder> recorder);
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope();

   private:
    std::shared_ptr<EventRecorder> before_;
  };

  EventRecorder() = default;
  EventRecorder(const EventRecorder&) = delete;
  EventRecorder& operator=(const EventRecorder&) = delete;

  /// The recorder of this thread; null when there is none.
  [[nodiscard]] static std::shared_ptr<EventRecorder> current();

  void record(Event event);
  /// What was recorded so far, in order.
  [[nodiscard]] std::vector<Event> events() const;
  /// Hands over what was recorded so far; what comes later is dropped.
  [[nodiscard]] std::vector<Event> close();

 private:
  mutable std::mutex mutex_;
  std::vector<Event> events_;
  bool is_closed_ = false;
};

/// Adds an event to the recorder of this thread; does nothing when there is none.
void record(Event event);

}  // namespace quoll::recording
