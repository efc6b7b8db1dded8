#include "quoll/foundation/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/unicode.h"
#include "quoll/foundation/utf8_kernel.h"
#include "quoll/foundation/utf8_state.h"

namespace quoll::foundation {

namespace {

unsigned byte_at(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kBlock = 4 * kWord;

std::uint64_t word_at(std::string_view text, std::size_t position) {
  std::uint64_t word = 0;
  std::memcpy(&word, text.data() + position, kWord);
  return word;
}

bool is_ascii(std::uint64_t word) {
  return (word & 0x8080808080808080U) == 0;
}

/// The ASCII at `position` in whole words, a block of them at a time where it lasts.
std::size_t ascii_words_end(std::string_view text, std::size_t position) {
  while (text.size() - position >= kBlock &&
         is_ascii(word_at(text, position) | word_at(text, position + kWord) |
                  word_at(text, position + 2 * kWord) | word_at(text, position + 3 * kWord))) {
    position += kBlock;
  }
  while (text.size() - position >= kWord && is_ascii(word_at(text, position))) {
    position += kWord;
  }
  return position;
}

/// The position after the last whole character before the first byte, at or after `position`, that
/// belongs to none.
std::size_t valid_until(std::string_view text, std::size_t position) {
  std::uint64_t state = utf8::kBoundary;
  std::size_t valid = position;
  for (; position < text.size() && !utf8::is_broken(state); ++position) {
    state = utf8::step(state, static_cast<unsigned char>(text[position]));
    valid = utf8::is_boundary(state) ? position + 1 : valid;
  }
  return valid;
}

bool is_continuation(std::string_view text, std::size_t position) {
  return (byte_at(text, position) & 0xC0U) == 0x80U;
}

bool is_white_space(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

/// The bytes of the white space character at the beginning, 0 when there is none.
std::size_t leading_white_space(std::string_view text) {
  const std::string_view character = first_character(text);
  return !character.empty() && is_white_space(character_of(character)) ? character.size() : 0;
}

std::size_t trailing_white_space(std::string_view text) {
  for (std::size_t back = 1; back <= 3 && back <= text.size(); ++back) {
    const std::size_t position = text.size() - back;
    if (!is_continuation(text, position)) {
      return leading_white_space(text.substr(position)) == back ? back : 0;
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
  while (const std::size_t length = leading_white_space(text)) {
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

std::string_view whole_characters(std::string_view text, std::size_t length) {
  if (text.size() <= length) {
    return text;
  }
  while (length > 0 && is_continuation(text, length)) {
    --length;
  }
  return text.substr(0, length);
}

std::string_view whole_characters(std::string_view piece) {
  constexpr std::size_t kLongest = 4;
  std::size_t start = piece.size();
  while (start > 0 && piece.size() - start < kLongest && is_continuation(piece, start - 1)) {
    --start;
  }
  const bool goes_on =
      start > 0 && piece.size() - start + 1 < length_of_character(piece[start - 1]);
  return goes_on ? piece.substr(0, start - 1) : piece;
}

bool is_utf8(std::string_view bytes) {
  static const utf8::Check check =
      utf8::avx2_check() != nullptr ? utf8::avx2_check() : utf8::is_utf8_portably;
  constexpr std::size_t kShort = 64;  // the most texts, for which nothing has to be set up
  return bytes.size() < kShort ? utf8::is_utf8_portably(bytes) : check(bytes);
}

bool utf8::is_utf8_portably(std::string_view bytes) {
  std::uint64_t state = utf8::kBoundary;
  std::size_t position = 0;
  while (bytes.size() - position >= kWord) {
    if (utf8::is_boundary(state)) {
      position = ascii_words_end(bytes, position);
    }
    const std::size_t end = std::min(position + kWord, bytes.size());
    for (; position < end; ++position) {
      state = utf8::step(state, static_cast<unsigned char>(bytes[position]));
    }
  }
  for (; position < bytes.size(); ++position) {
    state = utf8::step(state, static_cast<unsigned char>(bytes[position]));
  }
  return utf8::is_boundary(state);
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
