#include "quoll/foundation/percent.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "quoll/foundation/text.h"
#include "quoll/foundation/utf8_state.h"

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

/// How much is encoded at once, into a place that the nearest cache holds.
constexpr std::size_t kPart = 1024;

void encode_append(std::string& out, std::string_view text, const EncodeTable& table) {
  if (text.size() > kPart) {
    out.reserve(out.size() + text.size() + text.size() / 2);
  }
  while (!text.empty()) {
    const std::string_view part = text.substr(0, kPart);
    text.remove_prefix(part.size());
    std::array<char, sizeof(Encoded) * kPart> encoded;  // NOLINT(*-member-init): filled below
    char* to = encoded.data();
    for (const char c : part) {
      const Encoded& characters = table[static_cast<unsigned char>(c)];
      // Four bytes, whole. The builtin, since what fortified headers make of std::memcpy is a call
      // for each byte of the text, five times as slow.
      __builtin_memcpy(to, characters.data(), sizeof characters);
      to += characters[3];
    }
    out.append(encoded.data(), to);
  }
}

constexpr std::uint16_t kNoHexDigit = 0x100;

constexpr std::array<std::uint16_t, 256> make_digit_values() {
  std::array<std::uint16_t, 256> values{};
  values.fill(kNoHexDigit);
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
/// Text between two escapes is copied in whole pieces of this size, also where it is shorter.
constexpr std::ptrdiff_t kPiece = 16;

constexpr std::uint64_t kEachByte = 0x0101010101010101U;

/// One bit for each character of a block that is a "%", the first in the lowest bit. `bits` gets
/// the bits that are set in any of its words.
std::uint64_t escapes_in(const char* block, std::uint64_t& bits) {
  constexpr std::uint64_t kLow = 0x7F * kEachByte;
  std::uint64_t escapes = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, block + 8 * i, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
      word = __builtin_bswap64(word);
    }
    bits |= word;
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
    __builtin_memcpy(to, from, kPiece);  // a load and a store, see encode_append
  } else {
    std::memcpy(to, from, size);
  }
  return to + size;
}

/// Decodes a text piece by piece. `to` has room for all of it and a piece.
///
/// The escapes of a block are found first and then visited one by one, so that a step waits neither
/// for the text nor for a branch that depends on it. Where the unescaped text is ASCII, the
/// escaped bytes alone decide whether the result is UTF-8. They are checked on the way, which costs
/// next to nothing.
class Decoder {
 public:
  Decoder(const char* text, char* to) : to_(to), plain_(text) {}

  /// False when an escape is malformed. A piece can be read behind the block.
  bool decode_block(const char* block) {
    for (std::uint64_t escapes = escapes_in(block, bits_); escapes != 0; escapes &= escapes - 1) {
      const char* const escape = block + std::countr_zero(escapes);
      const unsigned value = value_of(escape[1], escape[2]);
      if (!is_byte(value)) {
        return false;
      }
      const auto byte = static_cast<unsigned char>(value);
      interrupted_ |= state_ * static_cast<std::uint64_t>(escape != plain_);
      state_ = utf8::step(state_, byte);
      to_ = append(to_, plain_, escape);
      *to_++ = static_cast<char>(byte);
      plain_ = escape + 3;
    }
    return true;
  }

  /// Ends the decoding in front of `block`: copies the unescaped text that is left, and answers
  /// where the rest of the text begins.
  const char* finish(const char* block) {
    if (plain_ < block) {
      to_ = append(to_, plain_, block);
      plain_ = block;
    }
    return plain_;
  }
  [[nodiscard]] char* end() const { return to_; }
  /// Whether all that was decoded is surely UTF-8.
  [[nodiscard]] bool is_utf8() const {
    return utf8::is_boundary(state_ | interrupted_) && (bits_ & 0x80 * kEachByte) == 0;
  }

 private:
  char* to_;
  const char* plain_;  // what follows is not copied yet
  std::uint64_t bits_ = 0;
  std::uint64_t state_ = utf8::kBoundary;  // of the escaped bytes
  std::uint64_t interrupted_ = 0;          // the states in which unescaped text followed
};

/// Where the result in `to` ends; null when an escape is malformed.
char* decode_simply(std::string_view text, char* to) {
  while (!text.empty()) {
    char c = text.front();
    text.remove_prefix(1);
    if (c == '%') {
      const unsigned value = text.size() < 2 ? kNoHexDigit : value_of(text[0], text[1]);
      if (!is_byte(value)) {
        return nullptr;
      }
      c = static_cast<char>(value);
      text.remove_prefix(2);
    }
    *to++ = c;
  }
  return to;
}

/// The result, and from where on it may not be UTF-8.
struct DecodedText {
  std::string text;
  std::size_t unchecked = 0;
};

std::optional<DecodedText> decode(std::string_view text) {
  DecodedText result{std::string(text.size() + kPiece, '\0')};
  char* const start = result.text.data();
  const char* const end = text.data() + text.size();
  const char* block = text.data();
  Decoder decoder(block, start);
  for (; end - block >= kBlock + kPiece; block += kBlock) {
    if (!decoder.decode_block(block)) {
      return std::nullopt;
    }
  }
  const char* const rest = decoder.finish(block);
  if (decoder.is_utf8()) {
    result.unchecked = static_cast<std::size_t>(decoder.end() - start);
  }
  const char* const last =
      decode_simply({rest, static_cast<std::size_t>(end - rest)}, decoder.end());
  if (last == nullptr) {
    return std::nullopt;
  }
  result.text.resize(static_cast<std::size_t>(last - start));
  return result;
}

std::optional<DecodedText> decode(std::string_view text, PlusSign plus) {
  if (plus == PlusSign::kSpace && text.find('+') != std::string_view::npos) {
    std::string with_spaces(text);
    std::replace(with_spaces.begin(), with_spaces.end(), '+', ' ');
    return decode(with_spaces);
  }
  if (text.find('%') == std::string_view::npos) {
    return DecodedText{std::string(text)};
  }
  return decode(text);
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
  auto decoded = decode(text, plus);
  return decoded ? std::optional(std::move(decoded->text)) : std::nullopt;
}

std::optional<std::string> percent_decode(std::string_view text, PlusSign plus) {
  auto decoded = decode(text, plus);
  if (!decoded || !is_utf8(std::string_view(decoded->text).substr(decoded->unchecked))) {
    return std::nullopt;
  }
  return std::move(decoded->text);
}

}  // namespace quoll::foundation
