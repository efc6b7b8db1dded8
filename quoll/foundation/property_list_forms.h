#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "quoll/foundation/value.h"

/// The readers of the forms of a property list, behind `read_property_list`. Each answers the root,
/// or null when the document is broken or beyond the limits. (No form can hold a null.)
namespace quoll::foundation::property_list {

/// Where a text is broken, in bytes from its beginning, and why.
struct Failure {
  std::size_t position = 0;
  std::string_view reason;

  /// Notes the first failure: those that follow from it tell less. Answers null.
  Value at(std::size_t place, std::string_view why) {
    if (reason.empty()) {
      *this = {place, why};
    }
    return {};
  }
};

/// `text` is UTF-8 without a byte-order mark. A null answer comes with a failure.
[[nodiscard, gnu::visibility("hidden")]] Value read_xml(std::string_view text, Failure& failure);
/// The same.
[[nodiscard, gnu::visibility("hidden")]] Value read_old(std::string_view text, Failure& failure);
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
