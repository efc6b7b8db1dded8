#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quoll::xml {

/// The white space that HTML joins.
inline constexpr std::string_view kWhite = " \t\n\f\r";

/// The length in bytes of a control character at `at` that HTML forbids; 0 when there is none. A
/// line feed counts as one: texts are taken line by line.
[[nodiscard]] std::size_t control_at(std::string_view text, std::size_t at);

/// Calls `take` with each piece of `text` between control characters.
template <typename Take>
void without_controls(std::string_view text, Take take) {
  while (!text.empty()) {
    std::size_t end = 0;
    while (end < text.size() && control_at(text, end) == 0) {
      ++end;
    }
    if (end > 0) {
      take(text.substr(0, end));
    }
    text.remove_prefix(end < text.size() ? end + control_at(text, end) : end);
  }
}

/// The escape for a character in text and attribute values; empty when it needs none.
[[nodiscard]] std::string_view escape(char byte);

/// Adds the text to `out`, escaped for a text or for an attribute in double quotes.
void add_escaped(std::string& out, std::string_view text);

/// Adds ` name="value"`, escaped and without control characters.
void add_attribute(std::string& out, std::string_view name, std::string_view value);

/// `#rrggbb`.
[[nodiscard]] std::string colour_text(std::uint32_t colour);

/// A family name in CSS: quoted, except for a generic family.
[[nodiscard]] std::string family_text(std::string_view font);

}  // namespace quoll::xml
