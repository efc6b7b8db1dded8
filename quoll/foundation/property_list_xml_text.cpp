#include "quoll/foundation/property_list_xml_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include "quoll/foundation/base64.h"
#include "quoll/foundation/exchange_date.h"
#include "quoll/foundation/property_list_forms.h"
#include "quoll/foundation/unicode.h"

namespace quoll::foundation::property_list {

namespace {

std::string_view without_blanks_around(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && is_blank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

/// The number that all of `text` is; none otherwise.
template <typename Number, typename... Format>
std::optional<Number> whole_number(std::string_view text, Format... format) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, number, format...);
  if (problem != std::errc() || stop != end) {
    return std::nullopt;
  }
  return number;
}

/// Takes "0x" away when the number is hexadecimal; answers the base.
int take_base(std::string_view& digits) {
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    digits.remove_prefix(2);
    return 16;
  }
  return 10;
}

/// The character that `name` of "&name;" stands for, appended; false when it is none.
bool append_entity(std::string& out, std::string_view name) {
  struct Entity {
    std::string_view name;
    char character;
  };
  constexpr Entity kEntities[] = {
      {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
  if (name.starts_with('#')) {
    name.remove_prefix(1);
    const int base = name.starts_with('x') ? 16 : 10;
    name.remove_prefix(base == 16 ? 1 : 0);
    const auto number = whole_number<std::uint32_t>(name, base);
    return number && *number != 0 && append_character(out, *number);
  }
  for (const Entity& entity : kEntities) {
    if (entity.name == name) {
      out += entity.character;
      return true;
    }
  }
  return false;
}

}  // namespace

bool append_unescaped(std::string& out, std::string_view piece) {
  while (true) {
    const std::size_t ampersand = piece.find('&');
    out += piece.substr(0, ampersand);
    if (ampersand == std::string_view::npos) {
      return true;
    }
    piece.remove_prefix(ampersand + 1);
    const std::size_t end = piece.find(';');
    if (end == std::string_view::npos || !append_entity(out, piece.substr(0, end))) {
      return false;
    }
    piece.remove_prefix(end + 1);
  }
}

Value integer_of_xml(std::string_view text) {
  text = without_blanks_around(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  const int base = take_base(text);
  const auto magnitude = whole_number<std::uint64_t>(text, base);
  if (!magnitude) {
    return {};
  }
  if (!negative) {
    return value_of_unsigned(*magnitude);
  }
  constexpr std::uint64_t kSmallest = 1ULL << 63U;
  return *magnitude <= kSmallest ? Value(static_cast<std::int64_t>(0 - *magnitude)) : Value();
}

Value real_of_xml(std::string_view text) {
  text = without_blanks_around(text);
  if (text.starts_with('+') && !text.starts_with("+-")) {
    text.remove_prefix(1);
  }
  const auto number = whole_number<double>(text);
  return number ? Value(*number) : Value();
}

Value date_of_xml(std::string_view text) {
  const auto moment = date_of_exchange_text(without_blanks_around(text));
  return moment ? Value(*moment) : Value();
}

Value bytes_of_xml(std::string_view base64) {
  std::string digits;
  digits.reserve(base64.size());
  std::copy_if(base64.begin(), base64.end(), std::back_inserter(digits),
               [](char c) { return !is_blank(c); });
  auto decoded = base64_decode(digits);
  return decoded ? Value(std::move(*decoded)) : Value();
}

}  // namespace quoll::foundation::property_list
