#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "quoll/foundation/value.h"

/// The readers of the forms of a property list, behind `read_property_list`. Each answers the root,
/// or null when the document is broken or beyond the limits. (No form can hold a null.)
namespace quoll::foundation::property_list {

/// `text` is UTF-8 without a byte-order mark.
[[nodiscard, gnu::visibility("hidden")]] Value read_xml(std::string_view text);
/// `text` is UTF-8 without a byte-order mark.
[[nodiscard, gnu::visibility("hidden")]] Value read_old(std::string_view text);
[[nodiscard, gnu::visibility("hidden")]] Value read_binary(std::string_view file);

/// An integer where it fits, else the nearest real.
[[nodiscard]] inline Value value_of_unsigned(std::uint64_t number) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  return number <= kLargest ? Value(static_cast<std::int64_t>(number))
                            : Value(static_cast<double>(number));
}

/// White space between the parts of a text form.
[[nodiscard]] inline bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace quoll::foundation::property_list
