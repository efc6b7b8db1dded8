#include "quoll/foundation/exchange_date.h"

#include "quoll/foundation/calendar.h"
#include "quoll/foundation/number_text.h"
#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

bool has_form(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";  // a 0 stands for any digit
  if (text.size() != kForm.size()) {
    return false;
  }
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool fits = kForm[i] == '0' ? is_ascii_digit(text[i]) : text[i] == kForm[i];
    if (!fits) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<Date> date_of_exchange_text(std::string_view text) {
  if (!has_form(text)) {
    return std::nullopt;
  }
  const auto number = [&](std::size_t position, std::size_t digits) {
    return static_cast<int>(integer_of_text(text.substr(position, digits)));
  };
  const auto seconds = seconds_from_civil(number(0, 4), number(5, 2), number(8, 2), number(11, 2),
                                          number(14, 2), number(17, 2));
  return seconds ? std::optional(Date{static_cast<double>(*seconds)}) : std::nullopt;
}

}  // namespace quoll::foundation
