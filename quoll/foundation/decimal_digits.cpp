#include "quoll/foundation/decimal_digits.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>

#include "quoll/foundation/unicode.h"

namespace quoll::foundation {

namespace {

/// The zeros of all scripts of Unicode 15; the nine digits of each follow its zero.
constexpr std::uint32_t kZeros[] = {
    0x00030, 0x00660, 0x006F0, 0x007C0, 0x00966, 0x009E6, 0x00A66, 0x00AE6, 0x00B66, 0x00BE6,
    0x00C66, 0x00CE6, 0x00D66, 0x00DE6, 0x00E50, 0x00ED0, 0x00F20, 0x01040, 0x01090, 0x017E0,
    0x01810, 0x01946, 0x019D0, 0x01A80, 0x01A90, 0x01B50, 0x01BB0, 0x01C40, 0x01C50, 0x0A620,
    0x0A8D0, 0x0A900, 0x0A9D0, 0x0A9F0, 0x0AA50, 0x0ABF0, 0x0FF10, 0x104A0, 0x10D30, 0x11066,
    0x110F0, 0x11136, 0x111D0, 0x112F0, 0x11450, 0x114D0, 0x11650, 0x116C0, 0x11730, 0x118E0,
    0x11950, 0x11C50, 0x11D50, 0x11DA0, 0x11F50, 0x16A60, 0x16AC0, 0x16B50, 0x1D7CE, 0x1D7D8,
    0x1D7E2, 0x1D7EC, 0x1D7F6, 0x1E140, 0x1E2F0, 0x1E4F0, 0x1E950, 0x1FBF0};

/// What stands for the character in an ASCII number; none when the character stays as it is.
std::optional<std::string_view> ascii_for(std::uint32_t character) {
  constexpr std::uint32_t kMinus = 0x2212;
  constexpr std::uint32_t kLeftToRight = 0x200E;
  constexpr std::uint32_t kRightToLeft = 0x200F;
  constexpr std::uint32_t kArabicLetter = 0x061C;
  if (character == kMinus) {
    return "-";
  }
  if (character == kLeftToRight || character == kRightToLeft || character == kArabicLetter) {
    return "";
  }
  constexpr std::string_view kDigits = "0123456789";
  const auto* const next = std::upper_bound(std::begin(kZeros), std::end(kZeros), character);
  if (next == std::begin(kZeros)) {
    return std::nullopt;
  }
  const std::uint32_t value = character - *std::prev(next);
  return value < kDigits.size() ? std::optional(kDigits.substr(value, 1)) : std::nullopt;
}

}  // namespace

std::string ascii_number(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::string_view character = first_character(text);
    if (character.empty()) {
      out += text.front();
      text.remove_prefix(1);
    } else {
      out += ascii_for(character_of(character)).value_or(character);
      text.remove_prefix(character.size());
    }
  }
  return out;
}

}  // namespace quoll::foundation
