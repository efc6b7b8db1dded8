#pragma once

#include <optional>

namespace quoll::icu {

/// Converts between UTC and local time. The offset from UTC is fixed, or it is that of the C
/// library's time zone (`TZ`, else /etc/localtime) at the moment in question. Times are seconds
/// since 1970. Any thread may call.
///
/// The time zone belongs to the whole process. So a clock that is made after `TZ` was changed also
/// changes the other clocks without a fixed offset.
class WallClock {
 public:
  /// Without an offset, `TZ` is read again.
  explicit WallClock(std::optional<int> seconds_from_gmt);

  /// The seconds that local time is ahead of UTC at a moment, which must be within a hundred
  /// million years of 1970.
  [[nodiscard]] int offset_at(double moment) const;

  /// The moment at which local time is `shown`. If local time skips it (when summer time begins), a
  /// moment near it.
  [[nodiscard]] double moment_of(double shown) const;

 private:
  std::optional<int> fixed_;
};

}  // namespace quoll::icu
