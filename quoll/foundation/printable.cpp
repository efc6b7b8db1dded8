#include "quoll/foundation/printable.h"

#include <array>
#include <cstdio>
#include <optional>

#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

constexpr std::string_view kCut = "…";

unsigned char byte_at(std::string_view text, std::size_t position) {
  return position < text.size() ? static_cast<unsigned char>(text[position]) : 0;
}

/// The code point at `position` when it is one that a terminal or a reader would obey.
std::optional<unsigned> obeyed_at(std::string_view text, std::size_t position) {
  const unsigned a = byte_at(text, position);
  const unsigned b = byte_at(text, position + 1);
  if (a < 0x20 || a == 0x7F) {
    return a;
  }
  if (a == 0xC2 && b < 0xA0) {
    return b;
  }
  if (a != 0xE2 || (b != 0x80 && b != 0x81)) {
    return std::nullopt;
  }
  const unsigned code = 0x2000 + ((b & 0x3FU) << 6U) + (byte_at(text, position + 2) & 0x3FU);
  const bool is_obeyed = (code >= 0x200E && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
                         (code >= 0x2066 && code <= 0x2069);
  return is_obeyed ? std::optional(code) : std::nullopt;
}

std::string escape(unsigned code) {
  switch (code) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  std::array<char, 16> out{};
  std::snprintf(out.data(), out.size(), code < 0x80 ? "\\x%02X" : "\\u%04X", code);
  return out.data();
}

}  // namespace

std::string printable(std::string_view bytes, std::size_t longest) {
  // Nothing gets shorter, so what is beyond need not be looked at.
  const std::string text = utf8_with_escapes(whole_characters(bytes, longest));
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto code = obeyed_at(text, i);
    if (!code) {
      out += text[i];
      continue;
    }
    out += escape(*code);
    i += *code < 0x80 ? 0 : (*code < 0x800 ? 1 : 2);
  }
  if (bytes.size() <= longest && out.size() <= longest) {
    return out;
  }
  return std::string(whole_characters(out, longest - kCut.size())).append(kCut);
}

}  // namespace quoll::foundation
