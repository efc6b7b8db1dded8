#pragma once

#include <concepts>
#include <cstddef>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/error.h"
#include "quoll/foundation/exception.h"
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
template <Integer I>
std::string text_of(I number) {
  return std::to_string(number);
}

/// The length of the slot (`%@`, `%lu`, `%i`) that `pattern` begins with, 0 when it is none.
constexpr std::size_t slot_length(std::string_view pattern) {
  for (const std::string_view slot : {"%@", "%lu", "%i"}) {
    if (pattern.starts_with(slot)) {
      return slot.size();
    }
  }
  return 0;
}

constexpr std::size_t slots_in(std::string_view pattern) {
  std::size_t slots = 0;
  for (; !pattern.empty(); pattern.remove_prefix(1)) {
    slots += slot_length(pattern) == 0 ? 0 : 1;
  }
  return slots;
}

/// Never defined: to call it ends the compilation.
void a_pattern_has_one_slot_for_each_argument();

/// A pattern with that many slots, counted by the compiler; text and constants turn into one. It
/// points to the text.
template <std::size_t kSlots>
class Pattern {
 public:
  template <std::convertible_to<std::string_view> Text>
  consteval Pattern(const Text& text) : text_(text) {  // NOLINT(google-explicit-constructor)
    if (slots_in(text_) != kSlots) {
      a_pattern_has_one_slot_for_each_argument();
    }
  }
  [[nodiscard]] constexpr std::string_view text() const { return text_; }

 private:
  std::string_view text_;
};

/// `pattern` with its slots filled in order by these texts, one each. What is filled in is not
/// looked at again.
[[nodiscard]] std::string fill_slots(std::string_view pattern,
                                     std::initializer_list<std::string> texts);

/// `pattern` with its slots filled by the arguments: `format("%@ (%@)", name, count)`.
template <typename... Arguments>
// cppcheck-suppress passedByValue  ; no more than a view of a literal
[[nodiscard]] std::string format(Pattern<sizeof...(Arguments)> pattern,
                                 const Arguments&... arguments) {
  return fill_slots(pattern.text(), {text_of(arguments)...});
}

/// The same with a pattern that only the running program knows, such as a translated one. One with
/// more slots or fewer raises `NSInvalidArgumentException`; whoever makes a catalogue compares
/// `slots_in` of each translation with the original's, so that none gets so far.
template <typename... Arguments>
[[nodiscard]] std::string format_translated(std::string_view pattern,
                                            const Arguments&... arguments) {
  if (slots_in(pattern) != sizeof...(Arguments)) {
    raise_invalid_argument("not one slot for each argument: " + std::string(pattern));
  }
  return fill_slots(pattern, {text_of(arguments)...});
}

}  // namespace quoll::foundation
