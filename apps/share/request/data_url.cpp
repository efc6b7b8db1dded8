#include "apps/share/request/data_url.h"

#include <algorithm>
#include <cstdint>

#include "quoll/foundation/percent.h"

namespace quoll::share {

namespace {

std::string small_letters(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  });
  return out;
}

/// The six bits of a Base64 digit, or -1.
int digit_of(char c) {
  if (c >= 'A' && c <= 'Z') {
    return c - 'A';
  }
  if (c >= 'a' && c <= 'z') {
    return c - 'a' + 26;
  }
  if (c >= '0' && c <= '9') {
    return c - '0' + 52;
  }
  if (c == '+' || c == '-') {
    return 62;
  }
  return c == '/' || c == '_' ? 63 : -1;
}

std::optional<std::string> from_base64(std::string_view text) {
  std::string out;
  out.reserve(text.size() / 4 * 3 + 3);
  std::uint32_t bits = 0;
  unsigned count = 0;
  bool padded = false;
  for (const char c : text) {
    if (c == ' ' || (c >= '\t' && c <= '\r')) {
      continue;
    }
    const int digit = digit_of(c);
    padded = padded || c == '=';
    if (padded && c != '=') {
      return std::nullopt;
    }
    if (padded) {
      continue;
    }
    if (digit < 0) {
      return std::nullopt;
    }
    bits = (bits << 6U) | static_cast<std::uint32_t>(digit);
    count += 6;
    if (count >= 8) {
      count -= 8;
      out += static_cast<char>((bits >> count) & 0xFFU);
    }
  }
  // One digit by itself holds no byte: something was cut off.
  return count == 6 ? std::nullopt : std::optional(std::move(out));
}

}  // namespace

std::optional<DataUrl> read_data_url(std::string_view url) {
  constexpr std::string_view kScheme = "data:";
  constexpr std::string_view kBase64 = ";base64";
  const std::size_t comma = url.find(',');
  if (comma == std::string_view::npos || small_letters(url.substr(0, kScheme.size())) != kScheme) {
    return std::nullopt;
  }
  std::string head = small_letters(url.substr(kScheme.size(), comma - kScheme.size()));
  std::erase_if(head, [](char c) { return c == ' ' || c == '\t'; });
  const bool is_base64 = head.ends_with(kBase64);
  auto bytes = foundation::percent_decode_bytes(url.substr(comma + 1));
  if (bytes && is_base64) {
    bytes = from_base64(*bytes);
  }
  if (!bytes) {
    return std::nullopt;
  }
  head.resize(std::min(head.find(';'), head.size()));
  return DataUrl{head.empty() ? "text/plain" : head, std::move(*bytes)};
}

}  // namespace quoll::share
