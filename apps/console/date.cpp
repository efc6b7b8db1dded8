#include <charconv>
#include <cmath>
#include <iostream>
#include <optional>
#include <string>

#include "apps/console/commands.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "quoll/foundation/number_text.h"
#include "quoll/platform/clock.h"
#include "quoll/records/extension_date.h"

namespace quoll::console {

namespace {

using foundation::Date;

std::optional<Date> date_of_seconds(const std::string& text) {
  double seconds = 0;
  const char* const last = text.data() + text.size();
  const auto [end, problem] = std::from_chars(text.data(), last, seconds);
  return problem == std::errc() && end == last && std::isfinite(seconds)
             ? std::optional(Date{seconds})
             : std::nullopt;
}

/// The date in the exchange format; null when that format cannot hold it.
Json exchanged(const ExtensionDate& formats, Date date) {
  const std::string text = formats.dateExchange()->stringFromDate(date);
  const auto read = formats.exchangeDate(text);
  return read && read->seconds_since_1970 == std::floor(date.seconds_since_1970) ? Json(text)
                                                                                 : Json();
}

void print(const Json& told) {
  std::cout << "seconds:  " << foundation::text_of_real(told["seconds"].get<double>()) << '\n'
            << "exchange: "
            << (told["exchange"].is_null() ? "none" : told["exchange"].get<std::string>()) << '\n'
            << "day:      " << told["day"] << '\n'
            << "shown as: " << told["shown"].get<std::string>() << '\n';
}

}  // namespace

int date(const std::optional<std::string>& text, bool as_json) {
  const platform::ScopedDesktop desktop(reading_desktop());
  const auto formats = ExtensionDate::shared();
  auto date = text ? formats->exchangeDate(*text) : platform::present_moment();
  date = date ? date : date_of_seconds(*text);
  if (!date) {
    return complain(*text +
                    " is neither a date of the form 2024-03-07T10:15:00Z nor a number of seconds");
  }
  const Json told{{"seconds", date->seconds_since_1970},
                  {"exchange", exchanged(*formats, *date)},
                  {"day", formats->IntDate(date)},
                  {"shown", formats->centralDate(date)}};
  if (as_json) {
    print_json(told);
  } else {
    print(told);
  }
  return finish();
}

}  // namespace quoll::console
