#include "quoll/foundation/upper_case.h"

#include <algorithm>
#include <iterator>

#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"
#include "quoll/foundation/upper_case_table.h"

namespace quoll::foundation {

namespace {

std::size_t length_after(unsigned char lead) {
  return lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The character that two to four well-formed bytes stand for.
char32_t character_of(std::string_view bytes) {
  const auto lead = static_cast<unsigned char>(bytes.front());
  char32_t character = lead & (0x7FU >> bytes.size());
  for (const char c : bytes.substr(1)) {
    character = character << 6U | (static_cast<unsigned char>(c) & 0x3FU);
  }
  return character;
}

void append_upper_case(std::string& out, char32_t character) {
  const auto* text = std::lower_bound(
      std::begin(kUpperCaseTexts), std::end(kUpperCaseTexts), character,
      [](const UpperCaseText& one, char32_t wanted) { return one.character < wanted; });
  if (text != std::end(kUpperCaseTexts) && text->character == character) {
    out += text->text;
    return;
  }
  const auto* run =
      std::lower_bound(std::begin(kUpperCaseRuns), std::end(kUpperCaseRuns), character,
                       [](const UpperCaseRun& one, char32_t wanted) { return one.last < wanted; });
  if (run != std::end(kUpperCaseRuns) && character >= run->first &&
      (character - run->first) % run->step == 0) {
    character = static_cast<char32_t>(static_cast<std::int64_t>(character) + run->distance);
  }
  append_character(out, character);
}

}  // namespace

std::string upper_case(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::string_view bytes =
        text.substr(0, length_after(static_cast<unsigned char>(text.front())));
    const char first = bytes.front();
    if (first >= 'a' && first <= 'z') {
      out += static_cast<char>(first - 'a' + 'A');
      text.remove_prefix(1);
    } else if (bytes.size() == 1 || !is_utf8(bytes)) {
      out += first;
      text.remove_prefix(1);
    } else {
      append_upper_case(out, character_of(bytes));
      text.remove_prefix(bytes.size());
    }
  }
  return out;
}

}  // namespace quoll::foundation
