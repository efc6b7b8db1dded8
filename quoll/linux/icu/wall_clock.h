#pragma once

#include <optional>

namespace quoll::icu {

/// What clocks on the wall show: UTC and an offset from it, fixed or as the C library's time zone
/// has it (`TZ`, else /etc/localtime) at the moment in question. Times are seconds since 1970. Any
/// thread may ask. The time zone is the whole process's: one clock that is made after `TZ` was
/// changed changes it for all that have no offset.
class WallClock {
 public:
  /// `TZ` is read again when no offset is given.
  explicit WallClock(std::optional<int> seconds_from_gmt);

  /// How far the clocks are ahead of UTC at a moment, in seconds. The moment is within a hundred
  /// million years of 1970.
  [[nodiscard]] int offset_at(double moment) const;

  /// A moment at which the clocks show this time. Where they skip it, one beside it.
  [[nodiscard]] double moment_of(double shown) const;

 private:
  std::optional<int> fixed_;
};

}  // namespace quoll::icu
