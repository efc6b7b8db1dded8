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
namespace detail {
struct DictionaryStorage;
struct ListStorage;
}  // namespace detail

/// A character, which is no number although the language lets it pass for one.
template <typename T>
concept Character = std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;
/// A whole number, neither a boolean nor a character.
template <typename T>
concept Integer = std::integral<T> && !std::same_as<T, bool> && !Character<T>;

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
/// and bytes never change while values share them; a list or dictionary changes for everyone who
/// holds it. One value must not be written by one thread while another reads it.
///
/// There are two families of reading, told apart by their names.
/// - *Tests* are named after a kind: `boolean()`, `integer()`, `real()`, `date()`, `text()`,
///   `bytes()`, `object()`, `as<T>()`. They answer a pointer or a handle, null when the value is of
///   another kind, and never raise.
/// - *Asks* are named after what is wanted of the value: `length()`, `integerValue()`,
///   `boolValue()`, `floatValue()`, `stringValue()`, `isEqualToString()`, `objectForKey()`,
///   `list()`. A null value answers nothing (0, false, null); one of the wrong kind raises
///   `NSInvalidArgumentException`.
///
/// A pointer that is answered lives as long as the value is unchanged, so none can be had from a
/// temporary: `record.mail().text()` does not compile, `const Value mail = record.mail();` comes
/// first.
class Value {
 public:
  Value() = default;
  Value(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): null is a value
  /// Only a true `bool`: a pointer must not turn into one on the way in.
  template <std::same_as<bool> B>
  Value(B boolean) : held_(boolean) {}  // NOLINT(google-explicit-constructor)
  /// One beyond the range of `std::int64_t` becomes the nearest real.
  template <Integer I>
  Value(I integer) {  // NOLINT(google-explicit-constructor)
    if (std::in_range<std::int64_t>(integer)) {
      held_.emplace<std::int64_t>(static_cast<std::int64_t>(integer));
    } else {
      held_.emplace<double>(static_cast<double>(integer));
    }
  }
  template <Character C>
  Value(C character) = delete;
  template <std::floating_point F>
  Value(F real) : held_(static_cast<double>(real)) {}         // NOLINT(google-explicit-constructor)
  Value(std::string text);                                    // NOLINT(google-explicit-constructor)
  Value(std::string_view text) : Value(std::string(text)) {}  // NOLINT(google-explicit-constructor)
  Value(const char* text) : Value(std::string(text)) {}       // NOLINT(google-explicit-constructor)
  Value(Bytes bytes);                                         // NOLINT(google-explicit-constructor)
  Value(Date date) : held_(date) {}                           // NOLINT(google-explicit-constructor)
  /// Null handles and null pointers become the null value.
  Value(List list);              // NOLINT(google-explicit-constructor)
  Value(Dictionary dictionary);  // NOLINT(google-explicit-constructor)
  template <std::derived_from<Object> T>
  Value(std::shared_ptr<T> object) {  // NOLINT(google-explicit-constructor)
    if (object) {
      held_.emplace<std::shared_ptr<Object>>(std::move(object));
    }
  }

  // Tests.
  [[nodiscard]] bool is_null() const { return std::holds_alternative<std::monostate>(held_); }
  [[nodiscard]] const bool* boolean() const& { return std::get_if<bool>(&held_); }
  [[nodiscard]] const std::int64_t* integer() const& { return std::get_if<std::int64_t>(&held_); }
  [[nodiscard]] const double* real() const& { return std::get_if<double>(&held_); }
  [[nodiscard]] const Date* date() const& { return std::get_if<Date>(&held_); }
  [[nodiscard]] const std::string* text() const&;
  [[nodiscard]] const Bytes* bytes() const&;
  const bool* boolean() const&& = delete;
  const std::int64_t* integer() const&& = delete;
  const double* real() const&& = delete;
  const Date* date() const&& = delete;
  const std::string* text() const&& = delete;
  const Bytes* bytes() const&& = delete;
  [[nodiscard]] std::shared_ptr<Object> object() const;
  /// True for a list and for a dictionary.
  [[nodiscard]] bool nests() const {
    return std::holds_alternative<SharedList>(held_) ||
           std::holds_alternative<SharedDictionary>(held_);
  }
  /// `as<List>()`, `as<Dictionary>()`: the list or the dictionary itself, else a null handle.
  template <typename T>
  requires std::same_as<T, List> || std::same_as<T, Dictionary>
  [[nodiscard]] T as() const {
    const auto* storage = std::get_if<std::shared_ptr<typename T::Storage>>(&held_);
    return storage == nullptr ? T(nullptr) : T(*storage);
  }
  /// The object when it is a `T`, else null.
  template <std::derived_from<Object> T>
  [[nodiscard]] std::shared_ptr<T> as() const {
    return std::dynamic_pointer_cast<T>(object());
  }

  /// Makes a text longer: in place where no other value shares it, so that a text that grows is not
  /// copied each time. A value of any other kind becomes the text `more`.
  void append_text(std::string_view more);

  // Asks.
  /// Bytes in a text, or the number of bytes.
  [[nodiscard]] std::size_t length() const;
  /// A number (reals truncate toward zero and saturate, NaN is 0) or a text read as an integer.
  [[nodiscard]] std::int64_t integerValue() const;
  /// A number that is not 0, or a text read as a boolean.
  [[nodiscard]] bool boolValue() const;
  /// A number or a text reduced to single precision.
  [[nodiscard]] float floatValue() const;
  /// The text; null (a null pointer) for null.
  [[nodiscard]] const std::string* stringValue() const&;
  const std::string* stringValue() const&& = delete;
  /// Exact equality of two texts. A null receiver answers false; another kind of receiver raises;
  /// an argument that is not a text is never equal.
  [[nodiscard]] bool isEqualToString(const Value& other) const;
  /// The entry of a dictionary, null when there is none.
  [[nodiscard]] Value objectForKey(std::string_view key) const;
  /// What an enumeration walks over: the list itself, the keys of a dictionary as a new list; a
  /// null list for null.
  [[nodiscard]] List list() const;

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
  using SharedList = std::shared_ptr<detail::ListStorage>;
  using SharedDictionary = std::shared_ptr<detail::DictionaryStorage>;

  [[noreturn, gnu::visibility("hidden")]] void raise_wrong_kind(std::string_view operation) const;

  std::variant<std::monostate, bool, std::int64_t, double, Date, SharedText, SharedBytes,
               SharedList, SharedDictionary, std::shared_ptr<Object>>
      held_;
};

}  // namespace quoll::foundation
