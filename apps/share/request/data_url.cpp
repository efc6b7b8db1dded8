#include "apps/share/request/data_url.h"

#include <algorithm>
#include <utility>

#include "quoll/foundation/base64.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/text.h"

namespace quoll::share {

namespace {

/// Base64 with either alphabet, white space in it, with padding at its end or without.
std::optional<std::string> from_base64(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
  text.resize(text.find_last_not_of('=') + 1);
  std::ranges::replace(text, '-', '+');
  std::ranges::replace(text, '_', '/');
  std::string bytes = foundation::base64_decode_digits(text);
  // One digit by itself holds no byte: something was cut off. What is no digit would be skipped.
  const bool is_whole =
      text.size() % 4 != 1 && bytes.size() == text.size() / 4 * 3 + text.size() % 4 * 3 / 4;
  return is_whole ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace

std::optional<DataUrl> read_data_url(std::string_view url) {
  constexpr std::string_view kScheme = "data:";
  constexpr std::string_view kBase64 = ";base64";
  const std::size_t comma = url.find(',');
  if (comma == std::string_view::npos ||
      foundation::ascii_lower_case(url.substr(0, kScheme.size())) != kScheme) {
    return std::nullopt;
  }
  std::string head =
      foundation::ascii_lower_case(url.substr(kScheme.size(), comma - kScheme.size()));
  std::erase_if(head, [](char c) { return c == ' ' || c == '\t'; });
  const bool is_base64 = head.ends_with(kBase64);
  auto bytes = foundation::percent_decode_bytes(url.substr(comma + 1));
  if (bytes && is_base64) {
    bytes = from_base64(std::move(*bytes));
  }
  if (!bytes) {
    return std::nullopt;
  }
  head.resize(std::min(head.find(';'), head.size()));
  return DataUrl{head.empty() ? "text/plain" : head, std::move(*bytes)};
}

}  // namespace quoll::share
