#include "apps/share/request/clipboard_content.h"

#include <algorithm>
#include <optional>

#include "apps/share/request/resolve_link.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"

namespace quoll::share {

namespace {

using foundation::ByteOrder;

/// How UTF-16 is written; none when it is not that.
std::optional<ByteOrder> order_of(std::string_view bytes) {
  if (bytes.size() < 2 || bytes.size() % 2 != 0) {
    return std::nullopt;
  }
  const std::string_view first = bytes.substr(0, 2);
  if (first == "\xFF\xFE" || (first[0] != '\0' && first[1] == '\0')) {
    return ByteOrder::kLittleEndian;
  }
  if (first == "\xFE\xFF" || (first[0] == '\0' && first[1] != '\0')) {
    return ByteOrder::kBigEndian;
  }
  return std::nullopt;
}

}  // namespace

std::string clipboard_text(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const auto order = order_of(bytes);
  std::string text = (order ? foundation::utf8_of_utf16(bytes, *order) : std::nullopt)
                         .value_or(std::string(bytes));
  if (text.starts_with(kMark)) {
    text.erase(0, kMark.size());
  }
  text.resize(text.find_last_not_of('\0') + 1);
  return text;
}

std::vector<std::string> clipboard_items(std::string_view text) {
  std::vector<std::string> items;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = foundation::trim(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.starts_with('/') || link_scheme(line)) {
      items.emplace_back(line);
    }
  }
  return items;
}

}  // namespace quoll::share
