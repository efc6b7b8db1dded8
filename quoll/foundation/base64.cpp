#include "quoll/foundation/base64.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quoll/foundation/base64_kernel.h"

namespace quoll::foundation {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Two digits for each twelve bits.
constexpr std::array<std::array<char, 2>, 4096> make_pairs() {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {kAlphabet[bits >> 6U], kAlphabet[bits & 63U]};
  }
  return pairs;
}

constexpr auto kPairs = make_pairs();

constexpr std::uint32_t kNoDigit = 1U << 24U;

/// What each character adds to the 24 bits of its group, by its place in the group.
constexpr std::array<std::array<std::uint32_t, 256>, 4> make_places() {
  std::array<std::array<std::uint32_t, 256>, 4> places{};
  for (std::size_t place = 0; place < places.size(); ++place) {
    places[place].fill(kNoDigit);
    for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
      places[place][static_cast<unsigned char>(kAlphabet[value])] =
          static_cast<std::uint32_t>(value << (18U - 6U * place));
    }
  }
  return places;
}

constexpr auto kPlaces = make_places();

unsigned at(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

/// The digit's value, `kNoDigit` when it is none.
std::uint32_t value_at(std::string_view text, std::size_t position) {
  return kPlaces[3][at(text, position)];
}

bool is_digit(char c) {
  return kPlaces[3][static_cast<unsigned char>(c)] != kNoDigit;
}

/// Eight bytes, the first in the highest bits.
std::uint64_t word_at(std::string_view text, std::size_t position) {
  std::uint64_t word = 0;
  std::memcpy(&word, text.data() + position, sizeof word);
  return std::endian::native == std::endian::big ? word : __builtin_bswap64(word);
}

char* put_pair(char* to, std::uint64_t bits) {
  std::memcpy(to, kPairs[bits].data(), 2);
  return to + 2;
}

/// How many whole bytes that many digits give.
constexpr std::size_t whole_bytes(std::size_t digits) {
  return digits / 4 * 3 + digits % 4 * 3 / 4;
}

void put_group(char* to, std::uint32_t group) {
  to[0] = static_cast<char>(group >> 16U);
  to[1] = static_cast<char>(group >> 8U);
  to[2] = static_cast<char>(group);
}

/// Decodes every digit of `text` and answers how many there are. `to` has room for
/// `text.size() / 4 * 3 + 3` bytes; `whole_bytes` of them are meant.
std::size_t decode_digits(const base64::Kernel* kernel, std::string_view text, char* to) {
  const char* const start = to;
  std::size_t i = kernel != nullptr ? kernel->decode(text, to) : 0;
  to += i / 4 * 3;
  std::uint32_t group = 0;
  std::size_t place = 0;
  while (i < text.size()) {
    if (place == 0 && text.size() - i >= 4) {
      const std::uint32_t whole = kPlaces[0][at(text, i)] | kPlaces[1][at(text, i + 1)] |
                                  kPlaces[2][at(text, i + 2)] | kPlaces[3][at(text, i + 3)];
      if (whole < kNoDigit) {
        put_group(to, whole);
        to += 3;
        i += 4;
        continue;
      }
    }
    const std::uint32_t bits = kPlaces[place][at(text, i++)];
    if (bits != kNoDigit) {
      group |= bits;
      if (++place == 4) {
        put_group(to, group);
        to += 3;
        group = 0;
        place = 0;
      }
    }
  }
  put_group(to, group);
  return static_cast<std::size_t>(to - start) / 3 * 4 + place;
}

template <typename Buffer>
struct Decoded {
  Buffer bytes;
  std::size_t digits;
};

template <typename Buffer>
Decoded<Buffer> decode_into(std::string_view text, const base64::Kernel* kernel = base64::avx2()) {
  Decoded<Buffer> decoded{Buffer(text.size() / 4 * 3 + 3, 0), 0};
  decoded.digits = decode_digits(kernel, text, reinterpret_cast<char*>(decoded.bytes.data()));
  decoded.bytes.resize(whole_bytes(decoded.digits));
  return decoded;
}

}  // namespace

std::string base64::encode_with(const Kernel* kernel, std::string_view bytes) {
  std::string out((bytes.size() + 2) / 3 * 4, '=');
  std::size_t i = kernel != nullptr ? kernel->encode(bytes, out.data()) : 0;
  char* to = out.data() + i / 3 * 4;
  for (; bytes.size() - i >= sizeof(std::uint64_t); i += 6) {
    const std::uint64_t word = word_at(bytes, i);
    to = put_pair(to, word >> 52U);
    to = put_pair(to, word >> 40U & 0xFFFU);
    to = put_pair(to, word >> 28U & 0xFFFU);
    to = put_pair(to, word >> 16U & 0xFFFU);
  }
  for (; bytes.size() - i >= 3; i += 3) {
    to = put_pair(to, at(bytes, i) << 4U | at(bytes, i + 1) >> 4U);
    to = put_pair(to, (at(bytes, i + 1) & 15U) << 8U | at(bytes, i + 2));
  }
  if (bytes.size() - i == 2) {
    to = put_pair(to, at(bytes, i) << 4U | at(bytes, i + 1) >> 4U);
    *to = kAlphabet[(at(bytes, i + 1) & 15U) << 2U];
  } else if (bytes.size() - i == 1) {
    put_pair(to, at(bytes, i) << 4U);
  }
  return out;
}

std::string base64::decode_with(const Kernel* kernel, std::string_view text) {
  return decode_into<std::string>(text, kernel).bytes;
}

std::string base64_encode(std::string_view bytes) {
  return base64::encode_with(base64::avx2(), bytes);
}

std::string base64_encode(const Bytes& bytes) {
  return base64_encode(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::optional<Bytes> base64_decode(std::string_view text) {
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const std::string_view digits = text.substr(0, text.size() - padding);
  auto [bytes, count] = decode_into<Bytes>(digits);
  if (text.size() % 4 != 0 || count != digits.size()) {
    return std::nullopt;
  }
  const std::uint32_t unused = (1U << (2 * padding)) - 1;
  if (padding != 0 && (value_at(digits, digits.size() - 1) & unused) != 0) {
    return std::nullopt;
  }
  // cppcheck-suppress returnStdMoveLocal  ; a part of a pair is not moved by itself
  return std::move(bytes);
}

std::optional<Bytes> base64_decode_ignoring_unknown(std::string_view text) {
  const std::size_t end = std::min(text.find('='), text.size());
  const std::string_view rest = text.substr(end);
  auto [bytes, count] = decode_into<Bytes>(text.substr(0, end));
  const auto padding = static_cast<std::size_t>(std::count(rest.begin(), rest.end(), '='));
  const bool digit_after = std::any_of(rest.begin(), rest.end(), is_digit);
  if (digit_after || (count + padding) % 4 != 0 || padding > 2) {
    return std::nullopt;
  }
  // cppcheck-suppress returnStdMoveLocal  ; a part of a pair is not moved by itself
  return std::move(bytes);
}

std::string base64_decode_digits(std::string_view text) {
  return base64::decode_with(base64::avx2(), text);
}

}  // namespace quoll::foundation
