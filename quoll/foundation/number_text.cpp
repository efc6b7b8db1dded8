#include "quoll/foundation/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

/// Drops the leading white space and one sign; true when the sign was a minus.
bool take_sign(std::string_view& text) {
  text = trim_leading(text);
  if (text.empty() || (text.front() != '-' && text.front() != '+')) {
    return false;
  }
  const bool negative = text.front() == '-';
  text.remove_prefix(1);
  return negative;
}

std::size_t digits_at(std::string_view text, std::size_t position) {
  const std::size_t start = position;
  while (position < text.size() && is_ascii_digit(text[position])) {
    ++position;
  }
  return position - start;
}

/// What a decimal text beyond the range of a double stands for: a huge one, or nothing at all.
double out_of_range(std::string_view decimal) {
  const std::size_t mark = std::min(decimal.find_first_of("eE"), decimal.size());
  const std::size_t point = std::min(decimal.substr(0, mark).find('.'), mark);
  const std::size_t first = decimal.find_first_of("123456789");
  const std::int64_t exponent =
      mark < decimal.size() ? integer_of_text(decimal.substr(mark + 1)) : 0;
  const auto places = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
  // The exponent may have saturated; the places of the digits never come near its ends.
  return exponent > -places ? std::numeric_limits<double>::max() : 0.0;
}

}  // namespace

std::int64_t integer_of_text(std::string_view text) {
  const bool negative = take_sign(text);
  const std::string digits =
      (negative ? "-" : "") + std::string(text.substr(0, digits_at(text, 0)));
  std::int64_t number = 0;
  const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (problem == std::errc::result_out_of_range) {
    return negative ? std::numeric_limits<std::int64_t>::min()
                    : std::numeric_limits<std::int64_t>::max();
  }
  return number;
}

bool boolean_of_text(std::string_view text) {
  take_sign(text);
  const std::size_t first = text.find_first_not_of('0');
  if (first == std::string_view::npos) {
    return false;
  }
  return std::string_view("YyTt123456789").find(text[first]) != std::string_view::npos;
}

float float_of_text(std::string_view text) {
  const bool negative = take_sign(text);
  // Neither a second sign nor the words for infinity and not-a-number are read.
  if (text.empty() || (!is_ascii_digit(text.front()) && text.front() != '.')) {
    return 0;
  }
  double number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (problem == std::errc::result_out_of_range) {
    number = out_of_range({text.data(), end});
  }
  return single_precision(negative ? -number : number);
}

float single_precision(double number) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(number, -kLargest, kLargest));
}

std::string padded_number(std::uint64_t number, std::size_t digits, int base) {
  char buffer[64];
  const auto [end, problem] = std::to_chars(buffer, buffer + sizeof buffer, number, base);
  const std::string_view written(buffer, static_cast<std::size_t>(end - buffer));
  return std::string(digits - std::min(digits, written.size()), '0').append(written);
}

std::string text_of_real(double real) {
  char buffer[64];
  const auto [end, problem] = std::to_chars(buffer, buffer + sizeof buffer, real);
  return {buffer, end};
}

}  // namespace quoll::foundation
