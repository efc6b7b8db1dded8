#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/value.h"

/// What an operation or a setter makes of a value that it was given. The wrong kind raises
/// `NSInvalidArgumentException`, as it would reach the caller of the platform.
namespace quoll::console {

[[noreturn]] void raise_wrong_argument(const foundation::Value& value, std::string_view wanted);

/// A text; null raises too.
[[nodiscard]] const std::string& text_argument(const foundation::Value& value);

/// A text, which lives as long as the value; null is none.
[[nodiscard]] std::optional<std::string_view> optional_text_argument(
    const foundation::Value& value);

/// A number or a boolean; null is 0, or false.
[[nodiscard]] std::int64_t integer_argument(const foundation::Value& value);
[[nodiscard]] bool boolean_argument(const foundation::Value& value);

/// An options word: the low 32 bits of a number.
[[nodiscard]] std::uint32_t options_argument(const foundation::Value& value);

/// A list, a dictionary; null is a null pointer.
[[nodiscard]] std::shared_ptr<foundation::List> list_argument(const foundation::Value& value);
[[nodiscard]] std::shared_ptr<foundation::Dictionary> dictionary_argument(
    const foundation::Value& value);

/// A copy of a dictionary; null is an empty one.
[[nodiscard]] foundation::Dictionary parameters_argument(const foundation::Value& value);

/// The text as a result; none is null.
[[nodiscard]] foundation::Value optional_text(std::optional<std::string> text);

/// An object of that class; null is a null pointer.
template <typename T>
[[nodiscard]] std::shared_ptr<T> object_argument(const foundation::Value& value,
                                                 std::string_view wanted) {
  auto object = value.as<T>();
  if (!object && !value.is_null()) {
    raise_wrong_argument(value, wanted);
  }
  return object;
}

}  // namespace quoll::console
