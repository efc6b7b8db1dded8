#include "quoll/linux/icu/date_formatter.h"

#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "quoll/foundation/exchange_date.h"
#include "quoll/linux/icu/user_locale.h"
#include "quoll/linux/icu/wall_clock.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/log.h"

namespace quoll::icu {

namespace {

using foundation::Date;
using platform::DateFormatterSettings;
using platform::NSDateFormatterStyle;

constexpr double kMilliseconds = 1000;

/// Uses only constant objects of ICU, which several threads may share.
class Formatter : public platform::NSDateFormatter {
 public:
  Formatter(std::unique_ptr<const ::icu::DateFormat> format, WallClock clock)
      : format_(std::move(format)), clock_(clock) {}

  std::string stringFromDate(Date date) const override {
    if (std::isnan(date.seconds_since_1970)) {
      return {};
    }
    constexpr double kFarthest = 1e14;  // three million years: farther than ICU's calendars go
    const double seconds = std::clamp(date.seconds_since_1970, -kFarthest, kFarthest);
    const auto calendar = calendar_ahead_by(clock_.offset_at(seconds));
    UErrorCode status = U_ZERO_ERROR;
    calendar->setTime(seconds * kMilliseconds, status);
    ::icu::UnicodeString text;
    ::icu::FieldPosition ignored(::icu::FieldPosition::DONT_CARE);
    format_->format(*calendar, text, ignored);
    std::string out;
    return text.toUTF8String(out);
  }

  std::optional<Date> dateFromString(std::string_view text) const override {
    if (text.size() > kLongest) {
      return std::nullopt;
    }
    const auto wanted =
        ::icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    const auto calendar = calendar_ahead_by(0);
    calendar->clear();
    ::icu::ParsePosition position;
    format_->parse(wanted, *calendar, position);
    UErrorCode status = U_ZERO_ERROR;
    const Date date{clock_.moment_of(calendar->getTime(status) / kMilliseconds)};
    // ICU also accepts a part of the text, additional blanks, and days that do not exist. Writing
    // the date again must give the same text.
    return U_SUCCESS(status) != 0 && position.getIndex() > 0 && stringFromDate(date) == text
               ? std::optional(date)
               : std::nullopt;
  }

 private:
  /// In bytes. No formatter writes a text as long as this.
  static constexpr std::size_t kLongest = 1000;

  [[nodiscard]] std::unique_ptr<::icu::Calendar> calendar_ahead_by(int seconds) const {
    std::unique_ptr<::icu::Calendar> calendar(format_->getCalendar()->clone());
    calendar->adoptTimeZone(
        new ::icu::SimpleTimeZone(seconds * static_cast<int>(kMilliseconds), {}));
    return calendar;
  }

  std::unique_ptr<const ::icu::DateFormat> format_;
  WallClock clock_;
};

/// The formatter of the exchange format. It reads by the rules of that format, which are stricter
/// than a pattern.
class ExchangeFormatter final : public Formatter {
 public:
  using Formatter::Formatter;

  std::optional<Date> dateFromString(std::string_view text) const override {
    return foundation::date_of_exchange_text(text);
  }
};

bool is_exchange(const DateFormatterSettings& settings) {
  return settings.locale == "en_US_POSIX" && settings.seconds_from_gmt == 0 &&
         settings.calendar == platform::NSCalendarIdentifierGregorian &&
         settings.date_format == foundation::kExchangeDateFormat;
}

::icu::Locale locale_of(const DateFormatterSettings& settings, UErrorCode& status) {
  ::icu::Locale locale = settings.locale ? locale_named(*settings.locale) : user_locale();
  if (settings.calendar) {
    locale.setKeywordValue("calendar", settings.calendar->c_str(), status);
  } else if (settings.date_format) {
    hold_calendar(locale, status);
  }
  return locale;
}

::icu::DateFormat::EStyle style_of(NSDateFormatterStyle style) {
  return style == NSDateFormatterStyle::NSDateFormatterShortStyle ? ::icu::DateFormat::kShort
                                                                  : ::icu::DateFormat::kNone;
}

std::unique_ptr<::icu::DateFormat> format_of(const DateFormatterSettings& settings,
                                             UErrorCode& status) {
  const ::icu::Locale locale = locale_of(settings, status);
  const bool has_style = settings.date_style != NSDateFormatterStyle::NSDateFormatterNoStyle ||
                         settings.time_style != NSDateFormatterStyle::NSDateFormatterNoStyle;
  if (settings.date_format || !has_style) {
    const std::string pattern = settings.date_format.value_or("");
    return std::make_unique<::icu::SimpleDateFormat>(::icu::UnicodeString::fromUTF8(pattern),
                                                     locale, status);
  }
  return std::unique_ptr<::icu::DateFormat>(::icu::DateFormat::createDateTimeInstance(
      style_of(settings.date_style), style_of(settings.time_style), locale));
}

void carry_back(::icu::DateFormat& format, UErrorCode& status) {
  const auto* gregorian = dynamic_cast<const ::icu::GregorianCalendar*>(format.getCalendar());
  if (gregorian != nullptr) {
    auto calendar = std::make_unique<::icu::GregorianCalendar>(*gregorian);
    calendar->setGregorianChange(std::numeric_limits<double>::lowest(), status);
    format.adoptCalendar(calendar.release());
  }
}

class IcuDates final : public platform::Dates {
 public:
  std::shared_ptr<platform::NSDateFormatter> formatter(
      const DateFormatterSettings& settings) override {
    UErrorCode status = U_ZERO_ERROR;
    auto format = format_of(settings, status);
    if (format && settings.calendar == platform::NSCalendarIdentifierGregorian) {
      carry_back(*format, status);
    }
    if (!format || U_FAILURE(status) != 0) {
      platform::log("dates: %@", u_errorName(status));
      return platform::empty_desktop().dates->formatter(settings);
    }
    const WallClock clock(settings.seconds_from_gmt);
    if (is_exchange(settings)) {
      return std::make_shared<ExchangeFormatter>(std::move(format), clock);
    }
    return std::make_shared<Formatter>(std::move(format), clock);
  }
};

}  // namespace

std::shared_ptr<platform::Dates> make_dates() {
  return std::make_shared<IcuDates>();
}

}  // namespace quoll::icu
