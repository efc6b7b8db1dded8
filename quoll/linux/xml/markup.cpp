#include "quoll/linux/xml/markup.h"

#include <algorithm>
#include <array>

namespace quoll::xml {

std::size_t control_at(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte == 0xC2 && at + 1 < text.size()) {
    return static_cast<unsigned char>(text[at + 1]) < 0xA0 ? 2 : 0;
  }
  return (byte < 0x20 && byte != '\t') || byte == 0x7F ? 1 : 0;
}

std::string_view escape(char byte) {
  switch (byte) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return {};
  }
}

void add_escaped(std::string& out, std::string_view text) {
  while (!text.empty()) {
    const auto end = std::min(text.find_first_of("&<>\""), text.size());
    out.append(text.substr(0, end));
    if (end < text.size()) {
      out.append(escape(text[end]));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void add_attribute(std::string& out, std::string_view name, std::string_view value) {
  out.append(" ").append(name).append("=\"");
  const std::size_t start = out.size();
  without_controls(value, [&out](std::string_view piece) { add_escaped(out, piece); });
  out.erase(std::remove(out.begin() + static_cast<std::ptrdiff_t>(start), out.end(), '\t'),
            out.end());
  out += '"';
}

std::string colour_text(std::uint32_t colour) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "#";
  for (int shift = 20; shift >= 0; shift -= 4) {
    text += kDigits[(colour >> static_cast<unsigned>(shift)) & 0xFU];
  }
  return text;
}

std::string family_text(std::string_view font) {
  constexpr std::array<std::string_view, 6> kKinds{"serif",   "sans-serif", "monospace",
                                                   "cursive", "fantasy",    "system-ui"};
  if (std::ranges::find(kKinds, font) != kKinds.end()) {
    return std::string(font);
  }
  std::string quoted = "'";
  for (const char byte : font) {
    if (byte == '\'' || byte == '\\') {
      quoted += '\\';
    }
    quoted += byte;
  }
  return quoted + "'";
}

}  // namespace quoll::xml
