#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts are UTF-8; ranges and lengths count bytes. All delimiters are ASCII, so a cut at one never
/// splits a character.
namespace quoll::foundation {

/// A piece of a text. The length is negative where `rangeOfURLQuery` finds a "#" before the "?";
/// `substring` raises for such a range.
struct Range {
  std::size_t location = 0;
  std::ptrdiff_t length = 0;
  friend bool operator==(const Range&, const Range&) = default;
};

/// The piece itself, into `text`. Outside the text raises `NSRangeException`.
[[nodiscard]] std::string_view substring(std::string_view text, Range range);

/// Without the white space and line breaks at both ends: Unicode's separators (Z*), TAB, U+000A to
/// U+000D and U+0085. The result points into `text`.
[[nodiscard]] std::string_view trim(std::string_view text);
/// The same at the front only.
[[nodiscard]] std::string_view trim_leading(std::string_view text);

constexpr bool is_ascii_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_ascii_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
/// The value of a digit of a base up to 16, in small letters or capitals; -1 for what is none.
constexpr int digit_value(char c, int base) {
  const int value = is_ascii_digit(c)      ? c - '0'
                    : c >= 'a' && c <= 'f' ? c - 'a' + 10
                    : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                           : base;
  return value < base ? value : -1;
}

/// A to Z become a to z; every other byte stays, whatever the locale is.
[[nodiscard]] constexpr char ascii_lower_case(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
[[nodiscard]] inline std::string ascii_lower_case(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    c = ascii_lower_case(c);
  }
  return out;
}

/// The first `length` bytes of a text, or a few less so that no character is cut. The result points
/// into `text`.
[[nodiscard]] std::string_view whole_characters(std::string_view text, std::size_t length);
/// A piece that was cut from a longer text, without its last character when the cut divides it.
[[nodiscard]] std::string_view whole_characters(std::string_view piece);

/// True when the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing above
/// U+10FFFF.
[[nodiscard]] bool is_utf8(std::string_view bytes);

/// The bytes with every byte that is not part of well-formed UTF-8 written as `%XX`, so that the
/// result is a text. Well-formed input comes back unchanged.
[[nodiscard]] std::string utf8_with_escapes(std::string_view bytes);

}  // namespace quoll::foundation
