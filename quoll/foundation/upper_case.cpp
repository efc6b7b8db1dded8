#include "quoll/foundation/upper_case.h"

#include <algorithm>
#include <iterator>

#include "quoll/foundation/unicode.h"
#include "quoll/foundation/upper_case_table.h"

namespace quoll::foundation {

namespace {

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
    const char first = text.front();
    const std::string_view character = first_character(text);
    if (first >= 'a' && first <= 'z') {
      out += static_cast<char>(first - 'a' + 'A');
    } else if (character.size() > 1) {
      append_upper_case(out, character_of(character));
    } else {
      out += first;
    }
    text.remove_prefix(std::max<std::size_t>(character.size(), 1));
  }
  return out;
}

}  // namespace quoll::foundation
