#include "quoll/foundation/percent.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kUnreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

/// What each byte becomes: up to three characters, and how many of the four are meant. All four are
/// stored for every byte and the next byte overwrites what was too much, so that the loop has no
/// branch that depends on the text.
struct Encoded {
  std::array<char, 4> characters;
};
struct EncodeTable {
  std::array<Encoded, 256> encoded{};
  std::array<std::uint8_t, 256> length{};
};

constexpr EncodeTable make_table(std::string_view kept, std::string_view also_kept) {
  EncodeTable table;
  for (std::size_t byte = 0; byte < 256; ++byte) {
    table.encoded[byte] = {{'%', kHexDigits[byte >> 4U], kHexDigits[byte & 15U], '\0'}};
    table.length[byte] = 3;
  }
  for (const std::string_view set : {kept, also_kept}) {
    for (const char c : set) {
      const auto byte = static_cast<unsigned char>(c);
      table.encoded[byte] = {{c, '\0', '\0', '\0'}};
      table.length[byte] = 1;
    }
  }
  return table;
}

constexpr EncodeTable kQueryTable = make_table(kUnreserved, "");
constexpr EncodeTable kPathTable = make_table(kUnreserved, "/!$&'()*+,:=@");

/// Text is encoded a piece at a time, so that a large text needs no buffer of three times its size.
constexpr std::size_t kPiece = 4096;

void encode_append(std::string& out, std::string_view text, const EncodeTable& table) {
  std::array<char, 3 * kPiece + 1> buffer;  // one more for the last store of four
  out.reserve(out.size() + text.size());
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, kPiece);
    char* to = buffer.data();
    for (const char c : piece) {
      const auto byte = static_cast<unsigned char>(c);
      std::memcpy(to, table.encoded[byte].characters.data(), 4);
      to += table.length[byte];
    }
    out.append(buffer.data(), static_cast<std::size_t>(to - buffer.data()));
    text.remove_prefix(piece.size());
  }
}

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> make_digit_values() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::uint8_t digit = 0; digit < 16; ++digit) {
    const auto upper = static_cast<unsigned char>(kHexDigits[digit]);
    values[upper] = digit;
    if (upper >= 'A') {
      values[static_cast<unsigned char>(upper + ('a' - 'A'))] = digit;
    }
  }
  return values;
}

constexpr std::array<std::uint8_t, 256> kDigitValues = make_digit_values();

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
  std::string out(text.size(), '\0');
  char* to = out.data();
  const char* from = text.data();
  const char* const end = from + text.size();
  while (from != end) {
    const char c = *from;
    if (c != '%') {
      *to++ = c == '+' && plus == PlusSign::kSpace ? ' ' : c;
      ++from;
      continue;
    }
    if (end - from < 3) {
      return std::nullopt;
    }
    const unsigned high = kDigitValues[static_cast<unsigned char>(from[1])];
    const unsigned low = kDigitValues[static_cast<unsigned char>(from[2])];
    if ((high | low) == kNoDigit) {
      return std::nullopt;
    }
    *to++ = static_cast<char>(high << 4U | low);
    from += 3;
  }
  out.resize(static_cast<std::size_t>(to - out.data()));
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
