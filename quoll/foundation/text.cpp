#include "quoll/foundation/text.h"

#include <cstdint>
#include <cstring>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/percent.h"

namespace quoll::foundation {

namespace {

unsigned byte_at(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

bool is_continuation(std::string_view text, std::size_t position) {
  return position < text.size() && (byte_at(text, position) & 0xC0U) == 0x80U;
}

/// The length of the well-formed character of more than one byte at `position`, 0 when there is
/// none. The second byte's bounds keep out overlong forms, surrogates and what is too large.
std::size_t multibyte_length(std::string_view text, std::size_t position) {
  const unsigned lead = byte_at(text, position);
  const unsigned second = position + 1 < text.size() ? byte_at(text, position + 1) : 0;
  std::size_t length = 0;
  unsigned low = 0x80;
  unsigned high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    low = lead == 0xE0 ? 0xA0 : 0x80;
    high = lead == 0xED ? 0x9F : 0xBF;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    low = lead == 0xF0 ? 0x90 : 0x80;
    high = lead == 0xF4 ? 0x8F : 0xBF;
  }
  if (length == 0 || second < low || second > high) {
    return 0;
  }
  for (std::size_t i = 2; i < length; ++i) {
    if (!is_continuation(text, position + i)) {
      return 0;
    }
  }
  return length;
}

/// The first position at or after `position` that is not ASCII, looked for eight bytes at a time.
std::size_t skip_ascii(std::string_view text, std::size_t position) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::uint64_t word = 0;
  while (position + sizeof word <= text.size()) {
    std::memcpy(&word, text.data() + position, sizeof word);
    if ((word & kHighBits) != 0) {
      break;
    }
    position += sizeof word;
  }
  while (position < text.size() && byte_at(text, position) < 0x80) {
    ++position;
  }
  return position;
}

/// The length of the well-formed prefix that starts at `position`, as the position after it.
std::size_t valid_until(std::string_view text, std::size_t position) {
  while (true) {
    position = skip_ascii(text, position);
    if (position == text.size()) {
      return position;
    }
    const std::size_t length = multibyte_length(text, position);
    if (length == 0) {
      return position;
    }
    position += length;
  }
}

bool is_white_space(std::uint32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

/// The character of `length` bytes at `position`; the bytes are well-formed, and no white space
/// needs more than three of them.
std::uint32_t character_at(std::string_view text, std::size_t position, std::size_t length) {
  const unsigned lead = byte_at(text, position);
  if (length == 2) {
    return (lead & 0x1FU) << 6U | (byte_at(text, position + 1) & 0x3FU);
  }
  if (length == 3) {
    return (lead & 0x0FU) << 12U | (byte_at(text, position + 1) & 0x3FU) << 6U |
           (byte_at(text, position + 2) & 0x3FU);
  }
  return lead;
}

/// The bytes of the white space character at `position`, 0 when there is none.
std::size_t white_space_at(std::string_view text, std::size_t position) {
  const std::size_t length = byte_at(text, position) < 0x80 ? 1 : multibyte_length(text, position);
  return length != 0 && is_white_space(character_at(text, position, length)) ? length : 0;
}

std::size_t trailing_white_space(std::string_view text) {
  for (std::size_t back = 1; back <= 3 && back <= text.size(); ++back) {
    const std::size_t position = text.size() - back;
    if (!is_continuation(text, position)) {
      return white_space_at(text, position) == back ? back : 0;
    }
  }
  return 0;
}

}  // namespace

std::string_view substring(std::string_view text, Range range) {
  if (range.length < 0 || range.location > text.size() ||
      static_cast<std::size_t>(range.length) > text.size() - range.location) {
    raise_range("a range of " + std::to_string(range.length) + " at " +
                std::to_string(range.location) + " is outside a text of " +
                std::to_string(text.size()));
  }
  return text.substr(range.location, static_cast<std::size_t>(range.length));
}

std::string_view trim_leading(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = white_space_at(text, 0);
    if (length == 0) {
      break;
    }
    text.remove_prefix(length);
  }
  return text;
}

std::string_view trim(std::string_view text) {
  text = trim_leading(text);
  while (const std::size_t length = trailing_white_space(text)) {
    text.remove_suffix(length);
  }
  return text;
}

bool is_utf8(std::string_view bytes) {
  return valid_until(bytes, 0) == bytes.size();
}

std::string utf8_with_escapes(std::string_view bytes) {
  std::string out;
  std::size_t position = 0;
  while (true) {
    const std::size_t end = valid_until(bytes, position);
    out.append(bytes.substr(position, end - position));
    if (end == bytes.size()) {
      return out;
    }
    percent_escape_append(out, bytes[end]);
    position = end + 1;
  }
}

}  // namespace quoll::foundation
