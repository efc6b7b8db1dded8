#include "quoll/foundation/calendar.h"

#include <chrono>

namespace quoll::foundation {

namespace {

/// True for 0 and above, but below the limit.
bool is_below(int number, int limit) {
  return number >= 0 && number < limit;
}

}  // namespace

std::optional<std::int64_t> seconds_from_civil(int year, int month, int day, int hour, int minute,
                                               int second) {
  constexpr int kLastYear = 9999;
  // The calendar's own types hold small numbers only: what does not fit them is refused before.
  if (year < 1 || year > kLastYear || !is_below(month, 13) || !is_below(day, 32) ||
      !is_below(hour, 24) || !is_below(minute, 60) || !is_below(second, 60)) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) {
    return std::nullopt;
  }
  const std::chrono::sys_seconds moment = std::chrono::sys_days(date) + std::chrono::hours(hour) +
                                          std::chrono::minutes(minute) +
                                          std::chrono::seconds(second);
  return moment.time_since_epoch().count();
}

}  // namespace quoll::foundation
