#include "quoll/foundation/percent.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kUnreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

/// What each byte becomes: up to three characters and, in the fourth place, how many of them are
/// meant. All four are stored for every byte and the next byte overwrites what was too much, so
/// that the loop has no branch that depends on the text.
using Encoded = std::array<char, 4>;
using EncodeTable = std::array<Encoded, 256>;

constexpr EncodeTable make_table(std::string_view kept, std::string_view also_kept) {
  EncodeTable table{};
  for (std::size_t byte = 0; byte < 256; ++byte) {
    table[byte] = {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 15U], 3};
  }
  for (const std::string_view set : {kept, also_kept}) {
    for (const char c : set) {
      table[static_cast<unsigned char>(c)] = {c, 0, 0, 1};
    }
  }
  return table;
}

constexpr EncodeTable kQueryTable = make_table(kUnreserved, "");
constexpr EncodeTable kPathTable = make_table(kUnreserved, "/!$&'()*+,:=@");

void encode_append(std::string& out, std::string_view text, const EncodeTable& table) {
  std::size_t length = 0;
  for (const char c : text) {
    length += static_cast<std::size_t>(table[static_cast<unsigned char>(c)][3]);
  }
  const std::size_t start = out.size();
  out.resize(start + length + sizeof(Encoded));  // room for what the last store has too much
  char* to = out.data() + start;
  for (const char c : text) {
    const Encoded& encoded = table[static_cast<unsigned char>(c)];
    std::memcpy(to, encoded.data(), sizeof encoded);
    to += encoded[3];
  }
  out.resize(start + length);
}

constexpr std::uint16_t kNoDigit = 0x100;

constexpr std::array<std::uint16_t, 256> make_digit_values() {
  std::array<std::uint16_t, 256> values{};
  values.fill(kNoDigit);
  for (std::uint16_t digit = 0; digit < 16; ++digit) {
    const auto upper = static_cast<unsigned char>(kHexDigits[digit]);
    values[upper] = digit;
    if (upper >= 'A') {
      values[static_cast<unsigned char>(upper + ('a' - 'A'))] = digit;
    }
  }
  return values;
}

constexpr std::array<std::uint16_t, 256> kDigitValues = make_digit_values();

/// The value of two digits, more than a byte holds when one of them is none.
unsigned value_of(char high, char low) {
  return static_cast<unsigned>(kDigitValues[static_cast<unsigned char>(high)] << 4U) |
         kDigitValues[static_cast<unsigned char>(low)];
}
constexpr bool is_byte(unsigned value) {
  return value <= 0xFF;
}

constexpr std::ptrdiff_t kBlock = 64;
/// What stands between two escapes is copied in pieces of this size, whether there is as much or
/// not.
constexpr std::ptrdiff_t kPiece = 16;

/// One bit for each character of a block that is a "%", the first in the lowest bit.
std::uint64_t escapes_in(const char* block) {
  constexpr std::uint64_t kEachByte = 0x0101010101010101U;
  constexpr std::uint64_t kLow = 0x7F * kEachByte;
  std::uint64_t escapes = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, block + 8 * i, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
      word = __builtin_bswap64(word);
    }
    const std::uint64_t difference = word ^ ('%' * kEachByte);
    // The highest bit of each byte that is "%", then those eight bits side by side.
    const std::uint64_t found = ~(((difference & kLow) + kLow) | difference | kLow) >> 7U;
    escapes |= (found * 0x0102040810204080U >> 56U) << (8 * i);
  }
  return escapes;
}

char* append(char* to, const char* from, const char* end) {
  const auto size = static_cast<std::size_t>(end - from);
  if (size <= kPiece) {
    std::memcpy(to, from, kPiece);
  } else {
    std::memcpy(to, from, size);
  }
  return to + size;
}

/// Decodes a text piece by piece. `to` has room for all of it and a piece.
///
/// The escapes of a block are found first and then visited one by one, so that a step waits neither
/// for the text nor for a branch that depends on it.
struct Decoder {
  char* to;
  const char* plain;  // what follows is not copied yet

  /// False when an escape is malformed. A piece can be read behind the block.
  bool decode_block(const char* block) {
    for (std::uint64_t escapes = escapes_in(block); escapes != 0; escapes &= escapes - 1) {
      const char* const escape = block + std::countr_zero(escapes);
      const unsigned value = value_of(escape[1], escape[2]);
      if (!is_byte(value)) {
        return false;
      }
      to = append(to, plain, escape);
      *to++ = static_cast<char>(value);
      plain = escape + 3;
    }
    return true;
  }
};

/// Where the result in `to` ends; null when an escape is malformed.
char* decode(std::string_view text, char* to) {
  const char* const end = text.data() + text.size();
  const char* block = text.data();
  Decoder decoder{to, block};
  for (; end - block >= kBlock + kPiece; block += kBlock) {
    if (!decoder.decode_block(block)) {
      return nullptr;
    }
  }
  if (decoder.plain < block) {
    decoder.to = append(decoder.to, decoder.plain, block);
    decoder.plain = block;
  }
  // The rest, with zeros behind it: they are no digits, so an escape that is cut off is malformed.
  std::array<char, 2 * kBlock + kPiece> last{};
  std::copy(block, end, last.begin());
  const char* const last_end = last.data() + (end - block);
  decoder.plain = last.data() + (decoder.plain - block);
  for (const char* rest = last.data(); rest < last_end; rest += kBlock) {
    if (!decoder.decode_block(rest)) {
      return nullptr;
    }
  }
  return append(decoder.to, decoder.plain, last_end);
}

}  // namespace

void percent_encode_append(std::string& out, std::string_view text) {
  encode_append(out, text, kQueryTable);
}

std::string percent_encode(std::string_view text) {
  std::string out;
  encode_append(out, text, kQueryTable);
  return out;
}

std::string percent_encode_path(std::string_view path) {
  std::string out;
  encode_append(out, path, kPathTable);
  return out;
}

void percent_escape_append(std::string& out, char byte) {
  const auto value = static_cast<unsigned char>(byte);
  out += '%';
  out += kHexDigits[value >> 4U];
  out += kHexDigits[value & 15U];
}

std::optional<std::string> percent_decode_bytes(std::string_view text, PlusSign plus) {
  if (text.find('%') == std::string_view::npos &&
      (plus == PlusSign::kItself || text.find('+') == std::string_view::npos)) {
    return std::string(text);
  }
  std::string with_spaces;
  if (plus == PlusSign::kSpace && text.find('+') != std::string_view::npos) {
    with_spaces = text;
    std::replace(with_spaces.begin(), with_spaces.end(), '+', ' ');
    text = with_spaces;
  }
  std::string out(text.size() + kPiece, '\0');
  const char* const end = decode(text, out.data());
  if (end == nullptr) {
    return std::nullopt;
  }
  out.resize(static_cast<std::size_t>(end - out.data()));
  return out;
}

std::optional<std::string> percent_decode(std::string_view text, PlusSign plus) {
  auto bytes = percent_decode_bytes(text, plus);
  if (bytes && !is_utf8(*bytes)) {
    return std::nullopt;
  }
  return bytes;
}

}  // namespace quoll::foundation
