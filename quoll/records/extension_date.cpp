#include "quoll/records/extension_date.h"

#include "quoll/foundation/decimal_digits.h"
#include "quoll/foundation/exchange_date.h"
#include "quoll/foundation/number_text.h"
#include "quoll/platform/clock.h"
#include "quoll/platform/desktop.h"

namespace quoll {

namespace {

using foundation::Date;
using platform::NSDateFormatterStyle;

std::string text_by(const ExtensionDate::Formatter& formatter, Date date) {
  const auto held = formatter();
  return held ? held->stringFromDate(date) : std::string();
}

}  // namespace

std::shared_ptr<ExtensionDate> ExtensionDate::make() {
  return std::make_shared<ExtensionDate>(foundation::Passkey<ExtensionDate>());
}

std::shared_ptr<ExtensionDate> ExtensionDate::shared() {
  // Never destroyed: a thread that outlives main may still use it.
  static auto* const instance = [] {
    auto* made = new std::shared_ptr<ExtensionDate>(make());
    (*made)->Initialize();
    return made;
  }();
  return *instance;
}

void ExtensionDate::Initialize() {
  const auto dates = platform::current_desktop()->dates;
  dateCentrale = dates->formatter({.time_style = NSDateFormatterStyle::NSDateFormatterShortStyle});
  dateCentrale2 = dates->formatter({.date_style = NSDateFormatterStyle::NSDateFormatterShortStyle});
  dataDay = dates->formatter({.date_format = "yyyyMMdd"});
  dateExchange = dates->formatter({.locale = "en_US_POSIX",
                                   .seconds_from_gmt = 0,
                                   .calendar = std::string(platform::NSCalendarIdentifierGregorian),
                                   .date_format = std::string(foundation::kExchangeDateFormat)});
}

std::int64_t ExtensionDate::IntDate(const std::optional<Date>& date) const {
  return date ? foundation::integer_of_text(foundation::ascii_number(text_by(dataDay, *date))) : 0;
}

std::string ExtensionDate::centralDate(const std::optional<Date>& date) const {
  if (!date) {
    return {};
  }
  const bool today = IntDate(date) == IntDate(platform::present_moment());
  return text_by(today ? dateCentrale : dateCentrale2, *date);
}

std::optional<Date> ExtensionDate::exchangeDate(const std::optional<std::string_view>& text) const {
  const auto lock = synchronized();
  const auto formatter = dateExchange();
  return text && formatter ? formatter->dateFromString(*text) : std::nullopt;
}

}  // namespace quoll
