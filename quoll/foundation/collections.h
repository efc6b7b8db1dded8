#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/foundation/value.h"

namespace quoll::foundation {

/// A growable list of values. This is a handle, as `Value` is: its copies share one list, and what
/// one of them changes changes for all; `copy()` makes another list.
///
/// `List()` is a new, empty list. `List(nullptr)`, and what a list was moved from, is null: false
/// as a condition and unlike every list there is. A null list holds nothing and is walked over as
/// an empty one; to change it raises `NSInvalidArgumentException`.
///
/// A list stores no nulls. It has no lock: who shares one between threads guards it (the lists of a
/// message are guarded by the message's lock). Iterators live until the list changes.
class List final {
 public:
  List();
  template <std::same_as<std::nullptr_t> Null>
  List(Null /*null*/) {}  // NOLINT(google-explicit-constructor): null is a list, but 0 is not
  List(std::initializer_list<Value> values);
  explicit List(std::vector<Value> values);
  /// Braces around lists could mean a list itself or a list of lists: `List(list)` is the former,
  /// `List{Value(list)}` the latter.
  template <std::same_as<List> T>
  List(std::initializer_list<T> ambiguous) = delete;
  template <std::same_as<std::nullptr_t> T>
  List(std::initializer_list<T> nulls) = delete;

  [[nodiscard]] explicit operator bool() const { return storage_ != nullptr; }
  /// The same for handles of one list and for no others; null for null.
  [[nodiscard]] const void* identity() const { return storage_.get(); }
  /// A new list of the same values, which are shared; null for null.
  [[nodiscard]] List copy() const;

  /// Appends. A null value raises `NSInvalidArgumentException`.
  void addObject(Value value);
  /// The element at `index`; outside the list raises `NSRangeException`.
  [[nodiscard]] Value objectAtIndex(std::size_t index) const;
  [[nodiscard]] std::size_t count() const;
  [[nodiscard]] bool empty() const { return count() == 0; }
  [[nodiscard]] const Value* begin() const&;
  [[nodiscard]] const Value* end() const&;
  const Value* begin() const&& = delete;
  const Value* end() const&& = delete;

  /// Equality by content; null equals null alone.
  friend bool operator==(const List& a, const List& b);

 private:
  friend class Value;
  using Storage = detail::ListStorage;
  explicit List(std::shared_ptr<Storage> storage) : storage_(std::move(storage)) {}

  std::shared_ptr<Storage> storage_;
};

/// A growable dictionary from text keys to values. It is a handle, null or not, as `List` is. It
/// enumerates in the order of arrival; replacing a value keeps its place.
///
/// A dictionary stores no nulls. It has no lock. Looking up is linear while it is small and
/// logarithmic when it is large: keys come from strangers, so there is no hash to flood.
class Dictionary final {
 public:
  struct Entry {
    std::string key;
    Value value;
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  Dictionary();
  template <std::same_as<std::nullptr_t> Null>
  Dictionary(Null /*null*/) {}  // NOLINT(google-explicit-constructor): as for lists
  Dictionary(std::initializer_list<Entry> entries);

  [[nodiscard]] explicit operator bool() const { return storage_ != nullptr; }
  /// As for lists.
  [[nodiscard]] const void* identity() const { return storage_.get(); }
  [[nodiscard]] Dictionary copy() const;

  /// Stores. A null value raises `NSInvalidArgumentException`.
  void setObject(Value value, std::string_view key);
  /// Stores under a key that is known to be absent, without looking it up again. A null value
  /// raises `NSInvalidArgumentException`.
  void add_new(Value value, std::string key);
  /// Makes room for that many entries.
  void reserve(std::size_t entries);
  void removeObjectForKey(std::string_view key);
  /// The value, or null when the key is absent.
  [[nodiscard]] Value objectForKey(std::string_view key) const;
  /// The value, or a null pointer when the key is absent; it lives until the dictionary changes.
  [[nodiscard]] const Value* find(std::string_view key) const&;
  /// The same, to be replaced in place by anything but null.
  [[nodiscard]] Value* find(std::string_view key) &;
  const Value* find(std::string_view key) const&& = delete;
  [[nodiscard]] std::size_t count() const;
  [[nodiscard]] bool empty() const { return count() == 0; }
  [[nodiscard]] const Entry* begin() const&;
  [[nodiscard]] const Entry* end() const&;
  const Entry* begin() const&& = delete;
  const Entry* end() const&& = delete;

  /// Equal when both hold the same keys with equal values, in whatever order; null equals null
  /// alone.
  friend bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  friend class Value;
  using Storage = detail::DictionaryStorage;
  explicit Dictionary(std::shared_ptr<Storage> storage) : storage_(std::move(storage)) {}
  [[nodiscard, gnu::visibility("hidden")]] Value* found(std::string_view key) const;

  std::shared_ptr<Storage> storage_;
};

}  // namespace quoll::foundation
