#pragma once

#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// The passing of time, so that a test can hold it.
class Clock : public foundation::Polymorphic {
 public:
  /// `sleepForTimeInterval:`: lets the calling thread wait that many seconds.
  virtual void sleep(double seconds) = 0;

  /// The present moment, by the calendar.
  [[nodiscard]] virtual foundation::Date now() = 0;
};

/// The present moment by the installed clock.
[[nodiscard]] foundation::Date present_moment();

/// Sleeps by the installed clock.
void sleep_for_time_interval(double seconds);

}  // namespace quoll::platform
