#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "quoll/foundation/object.h"

namespace quoll::foundation {

class Dictionary;
class List;

using Bytes = std::vector<unsigned char>;

/// A point in time: seconds since 1 January 1970 00:00:00 UTC, fractions allowed.
struct Date {
  double seconds_since_1970 = 0;
  friend bool operator==(const Date&, const Date&) = default;
};

/// Anything a dictionary, a list or a record field may hold: null, a boolean, an integer, a real, a
/// text, bytes, a date, a list, a dictionary or an object.
///
/// Copying is cheap: texts, bytes, lists, dictionaries and objects are shared by reference. Texts
/// and bytes never change once they are in a value; a list or dictionary changes for everyone who
/// holds it. One value must not be written by one thread while another reads it.
///
/// There are two families of reading. Our own code *tests*: `text()`, `as<T>()` and their like
/// answer a pointer or null and never raise. The steps that say "the value of the entry" *ask*:
/// `length()`, `integerValue()`, `list()` and their like answer nothing for null and raise
/// `NSInvalidArgumentException` when the value is of the wrong kind.
class Value {
 public:
  Value() = default;
  Value(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): null is a value
  /// Only a true `bool`: a pointer must not turn into one on the way in.
  template <std::same_as<bool> B>
  Value(B boolean) : held_(boolean) {}  // NOLINT(google-explicit-constructor)
  template <std::integral I>
  requires(!std::same_as<I, bool>) Value(I integer)  // NOLINT(google-explicit-constructor)
      : held_(static_cast<std::int64_t>(integer)) {}
  template <std::floating_point F>
  Value(F real) : held_(static_cast<double>(real)) {}         // NOLINT(google-explicit-constructor)
  Value(std::string text);                                    // NOLINT(google-explicit-constructor)
  Value(std::string_view text) : Value(std::string(text)) {}  // NOLINT(google-explicit-constructor)
  Value(const char* text) : Value(std::string(text)) {}       // NOLINT(google-explicit-constructor)
  Value(Bytes bytes);                                         // NOLINT(google-explicit-constructor)
  Value(Date date) : held_(date) {}                           // NOLINT(google-explicit-constructor)
  /// Null pointers of these three become the null value.
  Value(std::shared_ptr<List> list);              // NOLINT(google-explicit-constructor)
  Value(std::shared_ptr<Dictionary> dictionary);  // NOLINT(google-explicit-constructor)
  template <std::derived_from<Object> T>
  Value(std::shared_ptr<T> object) {  // NOLINT(google-explicit-constructor)
    if (object) {
      held_.emplace<std::shared_ptr<Object>>(std::move(object));
    }
  }

  // Tests: a pointer or null, which lives as long as this value is unchanged; nothing raises.
  [[nodiscard]] bool is_null() const { return std::holds_alternative<std::monostate>(held_); }
  [[nodiscard]] const bool* boolean() const { return std::get_if<bool>(&held_); }
  [[nodiscard]] const std::int64_t* integer() const { return std::get_if<std::int64_t>(&held_); }
  [[nodiscard]] const double* real() const { return std::get_if<double>(&held_); }
  [[nodiscard]] const Date* date() const { return std::get_if<Date>(&held_); }
  [[nodiscard]] const std::string* text() const;
  [[nodiscard]] const Bytes* bytes() const;
  [[nodiscard]] std::shared_ptr<List> as_list() const;
  [[nodiscard]] std::shared_ptr<Dictionary> as_dictionary() const;
  [[nodiscard]] std::shared_ptr<Object> object() const;
  /// True for a list and for a dictionary.
  [[nodiscard]] bool nests() const {
    return std::holds_alternative<std::shared_ptr<List>>(held_) ||
           std::holds_alternative<std::shared_ptr<Dictionary>>(held_);
  }
  /// The object when it is a `T`, else null.
  template <std::derived_from<Object> T>
  [[nodiscard]] std::shared_ptr<T> as() const {
    return std::dynamic_pointer_cast<T>(object());
  }

  // Asking: null answers zero, false or nothing; the wrong kind raises NSInvalidArgumentException.
  /// Bytes in a text, or the number of bytes.
  [[nodiscard]] std::size_t length() const;
  /// A number (reals truncate toward zero and saturate, NaN is 0) or a text read as an integer.
  [[nodiscard]] std::int64_t integerValue() const;
  /// A number that is not 0, or a text read as a boolean.
  [[nodiscard]] bool boolValue() const;
  /// A number or a text reduced to single precision.
  [[nodiscard]] float floatValue() const;
  /// The text; null (a null pointer) for null.
  [[nodiscard]] const std::string* string() const;
  /// Exact equality of two texts. A null receiver answers false; another kind of receiver raises;
  /// an argument that is not a text is never equal.
  [[nodiscard]] bool isEqualToString(const Value& other) const;
  /// The entry of a dictionary, null when there is none.
  [[nodiscard]] Value objectForKey(std::string_view key) const;
  /// The elements to walk over: a list's elements, a dictionary's keys.
  [[nodiscard]] std::vector<Value> list() const;

  /// What `%@` prints; "(null)" for null.
  [[nodiscard]] std::string description() const;

  /// The kind in words, for reasons and messages: "a text", "a list", ...
  [[nodiscard]] std::string_view kind() const;

  /// Equality by content; objects by `isEqual:`. Null equals null; a boolean, an integer and a real
  /// are numbers and are equal when their numbers are.
  friend bool operator==(const Value& a, const Value& b);

 private:
  using SharedText = std::shared_ptr<const std::string>;
  using SharedBytes = std::shared_ptr<const Bytes>;

  [[noreturn, gnu::visibility("hidden")]] void raise_wrong_kind(std::string_view operation) const;

  std::variant<std::monostate, bool, std::int64_t, double, Date, SharedText, SharedBytes,
               std::shared_ptr<List>, std::shared_ptr<Dictionary>, std::shared_ptr<Object>>
      held_;
};

}  // namespace quoll::foundation
