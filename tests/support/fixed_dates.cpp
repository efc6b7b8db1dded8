#include "tests/support/fixed_dates.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "quoll/foundation/exchange_date.h"

namespace quoll::test {

namespace {

using foundation::Date;
using platform::DateFormatterSettings;

/// Whole seconds, as far as the years of the C++ library go.
std::int64_t whole_seconds(Date date) {
  constexpr double kFarthest = 9e11;
  return static_cast<std::int64_t>(
      std::floor(std::clamp(date.seconds_since_1970, -kFarthest, kFarthest)));
}

/// A moment as the clocks of an offset show it.
struct Shown {
  Shown(Date date, int offset)
      : seconds(std::chrono::seconds(whole_seconds(date) + offset)),
        days(std::chrono::floor<std::chrono::days>(seconds)),
        day(days),
        time(seconds - days) {}

  std::chrono::sys_seconds seconds;
  std::chrono::sys_days days;
  std::chrono::year_month_day day;
  std::chrono::hh_mm_ss<std::chrono::seconds> time;
};

class FixedFormatter final : public platform::NSDateFormatter {
 public:
  FixedFormatter(const DateFormatterSettings& settings, int offset)
      : exchange_(settings.date_format == foundation::kExchangeDateFormat),
        day_(settings.date_format == "yyyyMMdd"),
        date_(settings.date_style != platform::NSDateFormatterStyle::NSDateFormatterNoStyle),
        time_(settings.time_style != platform::NSDateFormatterStyle::NSDateFormatterNoStyle),
        offset_(offset) {
    if (settings.date_format && !exchange_ && !day_) {
      throw std::invalid_argument("no such pattern: " + *settings.date_format);
    }
  }

  std::string stringFromDate(Date date) const override {
    const Shown shown(date, offset_);
    const int year = static_cast<int>(shown.day.year());
    const auto month = static_cast<unsigned>(shown.day.month());
    const auto day = static_cast<unsigned>(shown.day.day());
    const int hour = static_cast<int>(shown.time.hours().count());
    const int minute = static_cast<int>(shown.time.minutes().count());
    const int second = static_cast<int>(shown.time.seconds().count());
    char text[64] = "";
    if (exchange_) {
      std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", year, month, day, hour,
                    minute, second);
    } else if (day_) {
      std::snprintf(text, sizeof text, "%04d%02u%02u", year, month, day);
    } else if (date_) {
      std::snprintf(text, sizeof text, "%u/%u/%02d", month, day, year % 100);
    } else if (time_) {
      std::snprintf(text, sizeof text, "%d:%02d", hour, minute);
    }
    return text;
  }

  std::optional<Date> dateFromString(std::string_view text) const override {
    return exchange_ ? foundation::date_of_exchange_text(text) : std::nullopt;
  }

 private:
  bool exchange_;
  bool day_;
  bool date_;
  bool time_;
  int offset_;
};

}  // namespace

std::shared_ptr<platform::NSDateFormatter> FixedDates::formatter(
    const DateFormatterSettings& settings) {
  return std::make_shared<FixedFormatter>(settings,
                                          settings.seconds_from_gmt.value_or(seconds_from_gmt_));
}

}  // namespace quoll::test
