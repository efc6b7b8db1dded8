#pragma once

#include <cstdint>
#include <optional>

namespace quoll::foundation {

/// Seconds from 1 January 1970 00:00:00 UTC to a moment in UTC, in the Gregorian calendar carried
/// back before 1582. None for a date or time that does not exist (30 February, hour 24, second 60)
/// and for a year outside 1 to 9999.
[[nodiscard]] std::optional<std::int64_t> seconds_from_civil(int year, int month, int day, int hour,
                                                             int minute, int second);

}  // namespace quoll::foundation
