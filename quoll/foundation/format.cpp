#include "quoll/foundation/format.h"

namespace quoll::foundation {

std::string fill_slots(std::string_view pattern, std::initializer_list<std::string> texts) {
  std::size_t size = pattern.size();
  for (const std::string& text : texts) {
    size += text.size();
  }
  std::string out;
  out.reserve(size);
  const std::string* text = texts.begin();
  std::size_t position = 0;
  while (position < pattern.size()) {
    const std::size_t percent = std::min(pattern.find('%', position), pattern.size());
    out.append(pattern.substr(position, percent - position));
    position = percent;
    if (position == pattern.size()) {
      break;
    }
    const std::size_t slot = text == texts.end() ? 0 : slot_length(pattern.substr(position));
    if (slot == 0) {
      out += pattern[position++];
    } else {
      out += *text++;
      position += slot;
    }
  }
  return out;
}

}  // namespace quoll::foundation
