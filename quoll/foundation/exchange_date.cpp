#include "quoll/foundation/exchange_date.h"

#include "quoll/foundation/calendar.h"

namespace quoll::foundation {

namespace {

bool has_form(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";  // a 0 stands for any digit
  if (text.size() != kForm.size()) {
    return false;
  }
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool fits = kForm[i] == '0' ? text[i] >= '0' && text[i] <= '9' : text[i] == kForm[i];
    if (!fits) {
      return false;
    }
  }
  return true;
}

int number(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) {
    number = number * 10 + (digit - '0');
  }
  return number;
}

}  // namespace

std::optional<Date> date_of_exchange_text(std::string_view text) {
  if (!has_form(text)) {
    return std::nullopt;
  }
  const auto two = [&](std::size_t position) { return number(text.substr(position, 2)); };
  const auto seconds =
      seconds_from_civil(number(text.substr(0, 4)), two(5), two(8), two(11), two(14), two(17));
  return seconds ? std::optional(Date{static_cast<double>(*seconds)}) : std::nullopt;
}

}  // namespace quoll::foundation
