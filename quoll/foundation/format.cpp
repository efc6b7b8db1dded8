#include "quoll/foundation/format.h"

#include <array>

namespace quoll::foundation {

namespace {

/// The length of the slot that begins at the "%" at `position`, 0 when there is none.
std::size_t slot_at(std::string_view pattern, std::size_t position) {
  constexpr std::array<std::string_view, 3> kSlots{"%@", "%lu", "%i"};
  for (const std::string_view slot : kSlots) {
    if (pattern.substr(position).starts_with(slot)) {
      return slot.size();
    }
  }
  return 0;
}

}  // namespace

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
    const std::size_t slot = text == texts.end() ? 0 : slot_at(pattern, position);
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
