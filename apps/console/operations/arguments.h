#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"
#include "quoll/message/extension_message.h"
#include "quoll/requestutils/url_query.h"

/// Converts the value that an operation or a setter was given. A value of the wrong kind raises
/// `NSInvalidArgumentException`, as the platform does.
namespace quoll::console {

class DescribedContext;

[[noreturn]] void raise_wrong_argument(const foundation::Value& value, std::string_view wanted);

/// What an exception calls an object of the class that was wanted.
[[nodiscard]] inline std::string_view name_of(const std::shared_ptr<foundation::NSURL>& /*url*/) {
  return "a URL";
}
[[nodiscard]] inline std::string_view name_of(
    const std::shared_ptr<ExtensionMessage>& /*message*/) {
  return "an ExtensionMessage";
}
[[nodiscard]] inline std::string_view name_of(
    const std::shared_ptr<DescribedContext>& /*context*/) {
  return "a context";
}

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

/// A date; none for null.
[[nodiscard]] std::optional<foundation::Date> date_argument(const foundation::Value& value);

/// An object of the class `T`; a null pointer for null.
template <typename T>
[[nodiscard]] std::shared_ptr<T> object_argument(const foundation::Value& value) {
  auto object = value.as<T>();
  if (!object && !value.is_null()) {
    raise_wrong_argument(value, name_of(object));
  }
  return object;
}

/// The elements of a list, which must all be of the class `T` or null.
template <typename T>
[[nodiscard]] std::vector<std::shared_ptr<T>> objects_argument(const foundation::Value& value) {
  std::vector<std::shared_ptr<T>> objects;
  for (const foundation::Value& element : list_argument(value)) {
    objects.push_back(object_argument<T>(element));
  }
  return objects;
}

}  // namespace quoll::console
