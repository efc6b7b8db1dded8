#include "quoll/foundation/unicode.h"

#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

char continuation(char32_t character, unsigned shift) {
  return static_cast<char>(0x80U | ((character >> shift) & 0x3FU));
}

}  // namespace

std::size_t length_of_character(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

std::string_view first_character(std::string_view text) {
  const std::string_view bytes =
      text.substr(0, text.empty() ? 0 : length_of_character(text.front()));
  return is_utf8(bytes) ? bytes : std::string_view();
}

char32_t character_of(std::string_view bytes) {
  // The first of n bytes carries 7 - n bits; a byte that is alone carries 7.
  auto character = static_cast<char32_t>(static_cast<unsigned char>(bytes.front()));
  character &= bytes.size() == 1 ? 0x7FU : 0x7FU >> bytes.size();
  for (const char byte : bytes.substr(1)) {
    character = character << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return character;
}

bool append_character(std::string& out, char32_t character) {
  if (character < 0x80) {
    out += static_cast<char>(character);
  } else if (character < 0x800) {
    out += static_cast<char>(0xC0U | character >> 6U);
    out += continuation(character, 0);
  } else if (character < 0x10000) {
    if (is_high_surrogate(character) || is_low_surrogate(character)) {
      return false;
    }
    out += static_cast<char>(0xE0U | character >> 12U);
    out += continuation(character, 6);
    out += continuation(character, 0);
  } else if (character < 0x110000) {
    out += static_cast<char>(0xF0U | character >> 18U);
    out += continuation(character, 12);
    out += continuation(character, 6);
    out += continuation(character, 0);
  } else {
    return false;
  }
  return true;
}

std::optional<std::string> utf8_of_utf16(std::string_view bytes, ByteOrder order) {
  if (bytes.size() % 2 != 0) {
    return std::nullopt;
  }
  const std::size_t high = order == ByteOrder::kBigEndian ? 0 : 1;
  const auto unit_at = [&](std::size_t position) -> char32_t {
    return static_cast<char32_t>(static_cast<unsigned char>(bytes[position + high]) << 8U |
                                 static_cast<unsigned char>(bytes[position + 1 - high]));
  };
  std::string out;
  out.reserve(bytes.size());
  for (std::size_t position = 0; position < bytes.size(); position += 2) {
    char32_t character = unit_at(position);
    if (is_high_surrogate(character) && position + 2 < bytes.size() &&
        is_low_surrogate(unit_at(position + 2))) {
      position += 2;
      character = character_of_pair(character, unit_at(position));
    }
    if (!append_character(out, character)) {
      return std::nullopt;
    }
  }
  return out;
}

}  // namespace quoll::foundation
