#include "quoll/console/base64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace quoll::console {

namespace {

using foundation::Bytes;

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 64;

constexpr std::array<std::uint8_t, 256> make_values() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}

constexpr std::array<std::uint8_t, 256> kValues = make_values();

}  // namespace

std::string base64(const Bytes& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? bytes[i + k] : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

std::optional<Bytes> bytes_of_base64(std::string_view text) {
  if (text.size() % 4 != 0) {
    return std::nullopt;
  }
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const std::size_t digits = text.size() - padding;
  Bytes bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(text[i])];
    if (value == kNoDigit) {
      return std::nullopt;
    }
    group = group << 6 | value;
    if (i % 4 != 0) {
      const std::size_t left = 6 - 2 * (i % 4);  // bits of the next byte that came with this digit
      bytes.push_back(static_cast<unsigned char>(group >> left));
    }
  }
  const std::uint32_t unused = padding == 0 ? 0 : (1U << (2 * padding)) - 1;
  return (group & unused) == 0 ? std::optional(bytes) : std::nullopt;
}

}  // namespace quoll::console
