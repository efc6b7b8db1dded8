#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Characters as numbers, and conversion from UTF-16.
namespace quoll::foundation {

/// The bytes of the character with which a text begins; none when it begins with no well-formed
/// one.
[[nodiscard]] std::string_view first_character(std::string_view text);

/// The number of the character that these bytes are. They are one well-formed character.
[[nodiscard]] char32_t character_of(std::string_view bytes);

/// The length in bytes of a character that begins with this byte; 1 when none begins with it.
[[nodiscard]] std::size_t length_of_character(char lead);

/// Appends the character as UTF-8. False, and nothing appended, for what is no character: half of a
/// surrogate pair, or a number above U+10FFFF.
bool append_character(std::string& out, char32_t character);

enum class ByteOrder { kBigEndian, kLittleEndian };

/// UTF-16 as UTF-8, without looking for a byte-order mark. None when a byte or half of a surrogate
/// pair is left alone.
[[nodiscard]] std::optional<std::string> utf8_of_utf16(std::string_view bytes, ByteOrder order);

constexpr bool is_high_surrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool is_low_surrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}
/// The character that a pair of surrogates stands for.
constexpr char32_t character_of_pair(char32_t high, char32_t low) {
  return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
}

}  // namespace quoll::foundation
