#include "quoll/linux/icu/wall_clock.h"

#include <ctime>

#include <cmath>

namespace quoll::icu {

WallClock::WallClock(std::optional<int> seconds_from_gmt) : fixed_(seconds_from_gmt) {
  if (!fixed_) {
    ::tzset();
  }
}

int WallClock::offset_at(double moment) const {
  if (fixed_) {
    return *fixed_;
  }
  const auto seconds = static_cast<std::time_t>(std::floor(moment));
  std::tm fields{};
  return ::localtime_r(&seconds, &fields) != nullptr ? static_cast<int>(fields.tm_gmtoff) : 0;
}

double WallClock::moment_of(double shown) const {
  // The inner call gives the offset of about that moment, the outer one the offset of the moment
  // itself.
  return shown - offset_at(shown - offset_at(shown));
}

}  // namespace quoll::icu
