#include "quoll/foundation/printable.h"

#include "quoll/foundation/number_text.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"
#include "quoll/foundation/upper_case.h"

namespace quoll::foundation {

namespace {

constexpr std::string_view kCut = "…";

/// True for a character that a terminal or a reader would obey instead of showing it.
bool is_obeyed(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200E && c <= 0x200F) ||
         (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string escape(char32_t code) {
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
  return code < 0x80 ? "\\x" + upper_case(padded_number(code, 2, 16))
                     : "\\u" + upper_case(padded_number(code, 4, 16));
}

}  // namespace

std::string printable(std::string_view bytes, std::size_t longest) {
  // Nothing gets shorter, so what is beyond need not be looked at.
  const std::string text = utf8_with_escapes(whole_characters(bytes, longest));
  std::string out;
  out.reserve(text.size());
  for (std::string_view left = text; !left.empty();) {
    const std::string_view character = first_character(left);
    const char32_t code = character_of(character);
    out += is_obeyed(code) ? escape(code) : std::string(character);
    left.remove_prefix(character.size());
  }
  if (bytes.size() <= longest && out.size() <= longest) {
    return out;
  }
  return std::string(whole_characters(out, longest - kCut.size())).append(kCut);
}

}  // namespace quoll::foundation
