#include "quoll/records/extension_date.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "quoll/platform/desktop.h"
#include "tests/support/fixed_dates.h"
#include "tests/support/recorders.h"

namespace quoll {
namespace {

using foundation::Date;
using platform::DateFormatterSettings;
using platform::NSDateFormatterStyle;

constexpr double kMidnight = 1709769600;  // 2024-03-07T00:00:00Z
constexpr double kDay = 86400;

/// Writes what it was told and reads every text as the same date.
class ScriptedFormatter final : public platform::NSDateFormatter {
 public:
  explicit ScriptedFormatter(std::string text) : text_(std::move(text)) {}

  std::string stringFromDate(Date /*date*/) const override { return text_; }
  std::optional<Date> dateFromString(std::string_view /*text*/) const override {
    const int now_inside = ++inside_;
    most_inside = std::max(most_inside.load(), now_inside);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    --inside_;
    return Date{1};
  }

  mutable std::atomic<int> most_inside = 0;

 private:
  std::string text_;
  mutable std::atomic<int> inside_ = 0;
};

/// Keeps what was asked of it.
class RecordingDates final : public platform::Dates {
 public:
  std::shared_ptr<platform::NSDateFormatter> formatter(
      const DateFormatterSettings& settings) override {
    const std::lock_guard lock(mutex_);
    asked.push_back(settings);
    made.push_back(std::make_shared<ScriptedFormatter>(""));
    return made.back();
  }

  std::vector<DateFormatterSettings> asked;
  std::vector<std::shared_ptr<platform::NSDateFormatter>> made;

 private:
  std::mutex mutex_;
};

class ExtensionDateTest : public ::testing::Test {
 protected:
  /// With the clocks of that many seconds ahead of UTC.
  ExtensionDate& formats(int seconds_from_gmt = 0) {
    desktop_.reset();
    desktop_.emplace(platform::Desktop{
        .clock = clock, .dates = std::make_shared<test::FixedDates>(seconds_from_gmt)});
    formats_->Initialize();
    return *formats_;
  }

  std::shared_ptr<test::HeldClock> clock = std::make_shared<test::HeldClock>();

 private:
  std::optional<platform::ScopedDesktop> desktop_;
  std::shared_ptr<ExtensionDate> formats_ = ExtensionDate::make();
};

TEST_F(ExtensionDateTest, MakesTheFormattersInTheirOrder) {
  const auto dates = std::make_shared<RecordingDates>();
  const platform::ScopedDesktop desktop({.dates = dates});
  const auto formats = ExtensionDate::make();
  EXPECT_EQ(formats->dateCentrale(), nullptr);
  formats->Initialize();
  ASSERT_EQ(dates->asked.size(), 4U);
  EXPECT_EQ(formats->dateCentrale(), dates->made[0]);
  EXPECT_EQ(formats->dateCentrale2(), dates->made[1]);
  EXPECT_EQ(formats->dataDay(), dates->made[2]);
  EXPECT_EQ(formats->dateExchange(), dates->made[3]);
  formats->Initialize();
  EXPECT_EQ(formats->dateCentrale(), dates->made[4]) << "again, they are replaced";
  EXPECT_EQ(formats->dateExchange(), dates->made[7]);
}

TEST_F(ExtensionDateTest, AsksForTheUsersOwnUnlessItIsTheExchangeFormat) {
  const auto dates = std::make_shared<RecordingDates>();
  const platform::ScopedDesktop desktop({.dates = dates});
  ExtensionDate::make()->Initialize();
  constexpr auto kNone = NSDateFormatterStyle::NSDateFormatterNoStyle;
  constexpr auto kShort = NSDateFormatterStyle::NSDateFormatterShortStyle;
  ASSERT_EQ(dates->asked.size(), 4U);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(dates->asked[i].locale, std::nullopt);
    EXPECT_EQ(dates->asked[i].calendar, std::nullopt);
    EXPECT_EQ(dates->asked[i].seconds_from_gmt, std::nullopt);
  }
  EXPECT_EQ(dates->asked[0].date_style, kNone);
  EXPECT_EQ(dates->asked[0].time_style, kShort);
  EXPECT_EQ(dates->asked[0].date_format, std::nullopt);
  EXPECT_EQ(dates->asked[1].date_style, kShort);
  EXPECT_EQ(dates->asked[1].time_style, kNone);
  EXPECT_EQ(dates->asked[1].date_format, std::nullopt);
  EXPECT_EQ(dates->asked[2].date_format, "yyyyMMdd");
  EXPECT_EQ(dates->asked[3].date_format, "yyyy-MM-dd'T'HH:mm:ss'Z'");
  EXPECT_EQ(dates->asked[3].locale, "en_US_POSIX");
  EXPECT_EQ(dates->asked[3].calendar, "gregorian");
  EXPECT_EQ(dates->asked[3].seconds_from_gmt, 0);
}

TEST_F(ExtensionDateTest, ThereIsOneSharedInstance) {
  const auto first = ExtensionDate::shared();
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first->dataDay(), nullptr) << "it is initialised";
  std::vector<std::future<std::shared_ptr<ExtensionDate>>> others;
  for (int i = 0; i < 4; ++i) {
    others.push_back(std::async(std::launch::async, ExtensionDate::shared));
  }
  for (auto& other : others) {
    EXPECT_EQ(other.get(), first);
  }
}

TEST_F(ExtensionDateTest, ADayIsANumber) {
  EXPECT_EQ(formats().IntDate(std::nullopt), 0);
  EXPECT_EQ(formats().IntDate(Date{kMidnight}), 20240307);
  EXPECT_EQ(formats().IntDate(Date{946684799}), 19991231);
  EXPECT_EQ(formats(3600).IntDate(Date{946684799}), 20000101) << "the local day";
  EXPECT_EQ(formats().IntDate(Date{-62135596800}), 10101) << "the zeros in front are no digits";
}

TEST_F(ExtensionDateTest, ADayMayBeWrittenInOtherDigits) {
  for (const auto& [text, number] : {std::pair{"۱۴۰۲۱۲۱۷", std::int64_t{14021217}},
                                     std::pair{"\u200E\u2212۰۶۲۱۱۰۱۱", std::int64_t{-6211011}},
                                     std::pair{"", std::int64_t{0}}}) {
    ExtensionDate& dates = formats();
    dates.dataDay = std::make_shared<ScriptedFormatter>(text);
    EXPECT_EQ(dates.IntDate(Date{0}), number) << text;
  }
}

TEST_F(ExtensionDateTest, TodayShowsItsTimeAndOtherDaysTheirDate) {
  struct Row {
    const char* reason;
    double date;
    double present;
    int offset;
    const char* shown;
  };
  const Row rows[] = {
      {"this moment", kMidnight + 3600, kMidnight + 3600, 0, "1:00"},
      {"earlier today", kMidnight + 60, kMidnight + 7200, 0, "0:01"},
      {"later today", kMidnight + kDay - 1, kMidnight, 0, "23:59"},
      {"yesterday", kMidnight - kDay + 60, kMidnight + 60, 0, "3/6/24"},
      {"tomorrow", kMidnight + kDay, kMidnight + kDay - 1, 0, "3/8/24"},
      {"five minutes before midnight, just after it", kMidnight - 300, kMidnight + 1, 0, "3/6/24"},
      {"the first moment of today", kMidnight, kMidnight + kDay - 1, 0, "0:00"},
      {"the same day a year ago", kMidnight - 366 * kDay, kMidnight, 0, "3/7/23"},
      {"another day by UTC, the same here", kMidnight - 300, kMidnight + 300, 3600, "0:55"},
      {"the same day by UTC, another here", kMidnight + 300, kMidnight + 7200, -3600, "3/6/24"},
  };
  for (const Row& row : rows) {
    clock->present = row.present;
    EXPECT_EQ(formats(row.offset).centralDate(Date{row.date}), row.shown) << row.reason;
  }
  EXPECT_EQ(formats().centralDate(std::nullopt), "");
}

TEST_F(ExtensionDateTest, ReadsTheExchangeFormat) {
  EXPECT_EQ(formats().exchangeDate("2024-03-07T10:15:00Z"), Date{1709806500});
  EXPECT_EQ(formats(3600).exchangeDate("2024-03-07T10:15:00Z"), Date{1709806500})
      << "whatever the user's time zone";
  EXPECT_EQ(formats().exchangeDate(std::nullopt), std::nullopt);
  EXPECT_EQ(formats().exchangeDate(""), std::nullopt);
  EXPECT_EQ(formats().exchangeDate("2024-03-07T10:15:00"), std::nullopt);
  EXPECT_EQ(formats().exchangeDate("2024-03-07T10:15:00.5Z"), std::nullopt);
  EXPECT_EQ(formats().exchangeDate("2024-03-07T10:15:00+0100"), std::nullopt);
}

TEST_F(ExtensionDateTest, ParsesOneTextAtATime) {
  ExtensionDate& dates = formats();
  const auto formatter = std::make_shared<ScriptedFormatter>("");
  dates.dateExchange = formatter;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { EXPECT_EQ(dates.exchangeDate("x"), Date{1}); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(formatter->most_inside, 1);
}

TEST_F(ExtensionDateTest, ParsingHoldsTheObjectsLockAndWritingDoesNot) {
  ExtensionDate& dates = formats();
  std::future<std::optional<Date>> parsed;
  {
    const auto lock = dates.synchronized();
    parsed =
        std::async(std::launch::async, [&] { return dates.exchangeDate("1970-01-01T00:00:05Z"); });
    EXPECT_EQ(parsed.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    EXPECT_EQ(
        std::async(std::launch::async, [&] { return dates.centralDate(Date{kMidnight}); }).get(),
        "3/7/24");
    EXPECT_EQ(dates.exchangeDate("1970-01-01T00:00:04Z"), Date{4}) << "the lock is recursive";
  }
  EXPECT_EQ(parsed.get(), Date{5});
}

TEST_F(ExtensionDateTest, WithoutAFormatterNothingIsWrittenOrRead) {
  const auto dates = ExtensionDate::make();
  EXPECT_EQ(dates->IntDate(Date{kMidnight}), 0);
  EXPECT_EQ(dates->centralDate(Date{kMidnight}), "");
  EXPECT_EQ(dates->exchangeDate("2024-03-07T10:15:00Z"), std::nullopt);
}

TEST_F(ExtensionDateTest, SaysWhatItIs) {
  EXPECT_EQ(formats().description(), "ExtensionDate");
  EXPECT_EQ(formats().class_name(), "ExtensionDate");
}

}  // namespace
}  // namespace quoll
