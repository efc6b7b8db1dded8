#include "apps/quoll-compose/printable.h"

#include "quoll/foundation/text.h"

namespace quoll::receiver {

std::string printable(std::string_view text, bool keep_line_feeds) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const std::string valid = foundation::utf8_with_escapes(text);
  std::string out;
  for (std::size_t at = 0; at < valid.size(); ++at) {
    const auto byte = static_cast<unsigned char>(valid[at]);
    // The second half of the control characters are two bytes each: 0xC2 0x80 to 0xC2 0x9F.
    const bool wide_control = byte == 0xC2 && static_cast<unsigned char>(valid[at + 1]) < 0xA0;
    const bool control = byte < 0x20 || byte == 0x7F || wide_control;
    if (!control || (byte == '\n' && keep_line_feeds)) {
      out += valid[at];
      continue;
    }
    at += wide_control ? 1 : 0;
    const auto shown = static_cast<unsigned char>(valid[at]);
    out += "\\x";
    out += kDigits[shown >> 4U];
    out += kDigits[shown & 0xFU];
  }
  return out;
}

}  // namespace quoll::receiver
