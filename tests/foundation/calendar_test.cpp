#include "quoll/foundation/calendar.h"

#include <gtest/gtest.h>

#include <limits>

namespace quoll::foundation {
namespace {

struct Moment {
  const char* reason;
  int year, month, day, hour, minute, second;
  std::int64_t expected = 0;
};

TEST(SecondsFromCivil, CountsFromTheFirstMomentOf1970) {
  constexpr Moment kCases[] = {
      {"the beginning", 1970, 1, 1, 0, 0, 0, 0},
      {"the second before", 1969, 12, 31, 23, 59, 59, -1},
      {"every part counts", 2024, 3, 7, 10, 15, 30, 1709806530},
      {"a leap day", 2024, 2, 29, 0, 0, 0, 1709164800},
      {"the day after it", 2024, 3, 1, 0, 0, 0, 1709251200},
      {"a century that is a leap year", 2000, 2, 29, 23, 59, 59, 951868799},
      {"the first moment of all", 1, 1, 1, 0, 0, 0, -62135596800},
      {"the last", 9999, 12, 31, 23, 59, 59, 253402300799},
      {"before 1582 by the same calendar", 1582, 10, 10, 0, 0, 0, -12219724800},
  };
  for (const Moment& row : kCases) {
    EXPECT_EQ(seconds_from_civil(row.year, row.month, row.day, row.hour, row.minute, row.second),
              row.expected)
        << row.reason;
  }
}

TEST(SecondsFromCivil, RefusesWhatIsNoMoment) {
  constexpr int kHuge = std::numeric_limits<int>::max();
  constexpr Moment kCases[] = {
      {"year 0", 0, 1, 1, 0, 0, 0},
      {"year 10000", 10000, 1, 1, 0, 0, 0},
      {"month 0", 2024, 0, 1, 0, 0, 0},
      {"month 13", 2024, 13, 1, 0, 0, 0},
      {"a month that an unsigned byte would wrap", 2024, 257, 1, 0, 0, 0},
      {"a negative month", 2024, -255, 1, 0, 0, 0},
      {"day 0", 2024, 1, 0, 0, 0, 0},
      {"day 32", 2024, 1, 32, 0, 0, 0},
      {"a negative day", 2024, 1, -255, 0, 0, 0},
      {"30 February", 2024, 2, 30, 0, 0, 0},
      {"29 February of a common year", 2023, 2, 29, 0, 0, 0},
      {"29 February of a common century", 1900, 2, 29, 0, 0, 0},
      {"31 April", 2024, 4, 31, 0, 0, 0},
      {"hour 24", 2024, 1, 1, 24, 0, 0},
      {"a negative hour", 2024, 1, 1, -1, 0, 0},
      {"minute 60", 2024, 1, 1, 0, 60, 0},
      {"a negative minute", 2024, 1, 1, 0, -1, 0},
      {"second 60", 2024, 1, 1, 0, 0, 60},
      {"a negative second", 2024, 1, 1, 0, 0, -1},
      {"huge numbers", kHuge, kHuge, kHuge, kHuge, kHuge, kHuge},
  };
  for (const Moment& row : kCases) {
    EXPECT_FALSE(seconds_from_civil(row.year, row.month, row.day, row.hour, row.minute, row.second))
        << row.reason;
  }
}

}  // namespace
}  // namespace quoll::foundation
