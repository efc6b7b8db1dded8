#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/value.h"
#include "quoll/requestutils/url_query.h"

/// Converts the value that an operation or a setter was given. A value of the wrong kind raises
/// `NSInvalidArgumentException`, as the platform does.
namespace quoll::console {

[[noreturn]] void raise_wrong_argument(const foundation::Value& value, std::string_view wanted);

/// A text. Null raises too.
[[nodiscard]] const std::string& text_argument(const foundation::Value& value);

/// A text, valid as long as the value; none for null.
[[nodiscard]] std::optional<std::string_view> optional_text_argument(
    const foundation::Value& value);

/// A number or a boolean; 0 or false for null.
[[nodiscard]] std::int64_t integer_argument(const foundation::Value& value);
[[nodiscard]] bool boolean_argument(const foundation::Value& value);

/// Option bits: the low 32 bits of a number.
[[nodiscard]] RequestUtils::URLQueryOptions options_argument(const foundation::Value& value);

/// The list or the dictionary itself; a null one for null.
[[nodiscard]] foundation::List list_argument(const foundation::Value& value);
[[nodiscard]] foundation::Dictionary dictionary_argument(const foundation::Value& value);

/// A text as a result; null for none.
[[nodiscard]] foundation::Value optional_text(std::optional<std::string> text);

/// An object of the class `T`; a null pointer for null. `wanted` names the class in the exception.
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
