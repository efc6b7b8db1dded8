#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts are UTF-8; ranges and lengths count bytes. All delimiters are ASCII, so a cut at one never
/// splits a character.
namespace quoll::foundation {

/// A piece of a text. The length may be negative where a rule makes it so; `substring` refuses it.
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
/// A piece that was cut off a text, without the last character when that goes on behind the cut.
[[nodiscard]] std::string_view whole_characters(std::string_view piece);

/// True when the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing above
/// U+10FFFF.
[[nodiscard]] bool is_utf8(std::string_view bytes);

/// The bytes with every byte that is not part of well-formed UTF-8 written as `%XX`, so that the
/// result is a text. Well-formed input comes back unchanged.
[[nodiscard]] std::string utf8_with_escapes(std::string_view bytes);

}  // namespace quoll::foundation
