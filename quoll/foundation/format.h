#pragma once

#include <concepts>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/error.h"
#include "quoll/foundation/value.h"

/// The one way to turn something into the text that stands in a "%@".
namespace quoll::foundation {

inline constexpr std::string_view kNullText = "(null)";

inline std::string text_of(std::string_view text) {
  return std::string(text);
}
inline std::string text_of(const std::string& text) {
  return text;
}
inline std::string text_of(const char* text) {
  return text;
}
inline std::string text_of(const std::optional<std::string>& text) {
  return text ? *text : std::string(kNullText);
}
inline std::string text_of(const Value& value) {
  return value.description();
}
inline std::string text_of(const Error& error) {
  return error.description();
}
inline std::string text_of(const std::exception& exception) {
  return exception.what();
}
template <std::derived_from<Object> T>
std::string text_of(const std::shared_ptr<T>& object) {
  return object ? object->description() : std::string(kNullText);
}
template <typename T>
requires(std::integral<T> && !std::same_as<T, bool>) std::string text_of(T number) {
  return std::to_string(number);
}

/// `pattern` with its slots (`%@`, `%lu`, `%i`) filled in order. What is filled in is not looked at
/// again. There are as many slots as texts; a slot without one stays as it is.
[[nodiscard]] std::string fill_slots(std::string_view pattern,
                                     std::initializer_list<std::string> texts);

template <typename... Arguments>
[[nodiscard]] std::string format(std::string_view pattern, const Arguments&... arguments) {
  return fill_slots(pattern, {text_of(arguments)...});
}

}  // namespace quoll::foundation
