#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "quoll/foundation/exchange_date.h"
#include "quoll/linux/icu/date_formatter.h"
#include "quoll/platform/dates.h"
#include "tests/support/fixed_dates.h"

namespace quoll {
namespace {

using foundation::Date;
using platform::DateFormatterSettings;
using platform::NSDateFormatterStyle;
using Dates = std::shared_ptr<platform::Dates>;

constexpr auto kShort = NSDateFormatterStyle::NSDateFormatterShortStyle;
constexpr double kFirst = -62135596800;  // 0001-01-01T00:00:00Z
constexpr double kLast = 253402300799;   // 9999-12-31T23:59:59Z
constexpr double kMoment = 1709806500;   // 2024-03-07T10:15:00Z
constexpr double kDay = 86400;

const DateFormatterSettings kExchange{
    .locale = "en_US_POSIX",
    .seconds_from_gmt = 0,
    .calendar = std::string(platform::NSCalendarIdentifierGregorian),
    .date_format = std::string(foundation::kExchangeDateFormat)};

class DatesContract : public ::testing::TestWithParam<Dates (*)()> {
 protected:
  DatesContract() {
    setenv("LC_ALL", "en_US", 1);
    setenv("TZ", "UTC", 1);
    dates = GetParam()();
  }
  ~DatesContract() override {
    unsetenv("LC_ALL");
    unsetenv("TZ");
  }

  Dates dates;
};

TEST_P(DatesContract, TheExchangeFormatIsWrittenAndReadBack) {
  const auto exchange = dates->formatter(kExchange);
  const std::pair<double, const char*> cases[] = {
      {kMoment, "2024-03-07T10:15:00Z"},   {0, "1970-01-01T00:00:00Z"},
      {-1, "1969-12-31T23:59:59Z"},        {kFirst, "0001-01-01T00:00:00Z"},
      {kLast, "9999-12-31T23:59:59Z"},     {-12219292801, "1582-10-14T23:59:59Z"},
      {951782400, "2000-02-29T00:00:00Z"},
  };
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(exchange->stringFromDate({seconds}), text);
    EXPECT_EQ(exchange->dateFromString(text), Date{seconds}) << text;
  }
  EXPECT_EQ(exchange->stringFromDate({kMoment + 0.9}), "2024-03-07T10:15:00Z")
      << "a part of a second is cut";
  EXPECT_EQ(exchange->stringFromDate({-0.5}), "1969-12-31T23:59:59Z") << "before 1970 as well";
}

TEST_P(DatesContract, TheExchangeFormatIsReadStrictly) {
  const auto exchange = dates->formatter(kExchange);
  for (const char* text :
       {"", "2024-03-07T10:15:00", " 2024-03-07T10:15:00Z", "2024-03-07T10:15:00Z ",
        "2024-03-07T10:15:00+0000", "2024-03-07T10:15:00.5Z", "2024-3-07T10:15:00Z",
        "2024-02-30T10:15:00Z", "2024-03-07T24:00:00Z", "2024-03-07T10:15:60Z",
        "+024-03-07T10:15:00Z", "2024-03-07t10:15:00z", "0000-03-07T10:15:00Z",
        "\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA4-03-07T10:15:00Z", "2024-03-07T10:15:00\xFF"}) {
    EXPECT_EQ(exchange->dateFromString(text), std::nullopt) << text;
  }
}

TEST_P(DatesContract, ADayIsANumberOfTheUsersDay) {
  const auto day = dates->formatter({.date_format = "yyyyMMdd"});
  EXPECT_EQ(day->stringFromDate({kMoment}), "20240307");
  EXPECT_EQ(day->stringFromDate({946598400}), "19991231");
  EXPECT_EQ(day->stringFromDate({946684799.9}), "19991231");
  EXPECT_EQ(day->stringFromDate({946684800}), "20000101");
  EXPECT_EQ(day->stringFromDate({kLast}), "99991231");
}

TEST_P(DatesContract, AShortTimeTellsTheTimeOnlyAndAShortDateTheDateOnly) {
  const auto time = dates->formatter({.time_style = kShort});
  const auto date = dates->formatter({.date_style = kShort});
  EXPECT_EQ(time->stringFromDate({kMoment}), time->stringFromDate({kMoment + kDay}));
  EXPECT_NE(time->stringFromDate({kMoment}), time->stringFromDate({kMoment + 60}));
  EXPECT_EQ(date->stringFromDate({kMoment}), date->stringFromDate({kMoment + 3600}));
  EXPECT_NE(date->stringFromDate({kMoment}), date->stringFromDate({kMoment + kDay}));
  EXPECT_NE(time->stringFromDate({kMoment}).find("10:15"), std::string::npos);
  EXPECT_EQ(date->stringFromDate({kMoment}), "3/7/24");
}

TEST_P(DatesContract, WithoutStyleAndPatternNothingIsWritten) {
  EXPECT_EQ(dates->formatter({})->stringFromDate({kMoment}), "");
}

TEST_P(DatesContract, AnOffsetMovesTheDay) {
  const auto ahead = dates->formatter({.seconds_from_gmt = 14 * 3600, .date_format = "yyyyMMdd"});
  const auto behind = dates->formatter({.seconds_from_gmt = -11 * 3600, .date_format = "yyyyMMdd"});
  EXPECT_EQ(ahead->stringFromDate({kMoment}), "20240308");
  EXPECT_EQ(behind->stringFromDate({kMoment}), "20240306");
}

TEST_P(DatesContract, ManyThreadsMayUseOneFormatter) {
  const auto day = dates->formatter({.date_format = "yyyyMMdd"});
  const auto exchange = dates->formatter(kExchange);
  std::atomic<int> wrong = 0;
  const auto work = [&](int number) {
    for (int i = 0; i < 200; ++i) {
      const double seconds = kMoment + (number % 2 == 0 ? 0 : kDay);
      const char* expected = number % 2 == 0 ? "20240307" : "20240308";
      wrong += day->stringFromDate({seconds}) == expected ? 0 : 1;
      wrong +=
          exchange->dateFromString(exchange->stringFromDate({seconds})) == Date{seconds} ? 0 : 1;
    }
  };
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back(work, number);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0);
}

INSTANTIATE_TEST_SUITE_P(Makers, DatesContract,
                         ::testing::Values(
                             +[]() -> Dates { return std::make_shared<test::FixedDates>(); },
                             +[]() -> Dates { return icu::make_dates(); }));

}  // namespace
}  // namespace quoll
