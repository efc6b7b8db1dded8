#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/value.h"

namespace quoll::foundation {

/// A growable list of values, held by `std::shared_ptr` and shared by everyone who holds it.
///
/// A list stores no nulls. It has no lock: who shares one between threads guards it (the lists of a
/// message are guarded by the message's lock).
class List final {
 public:
  List() = default;
  List(std::initializer_list<Value> values);
  explicit List(std::vector<Value> values);
  List(const List&) = default;
  List& operator=(const List&) = default;
  /// Nested lists and dictionaries are released one after the other, not one inside the other, so
  /// that no depth exhausts the stack.
  ~List();

  /// Appends. A null value raises `NSInvalidArgumentException`.
  void addObject(Value value);
  /// The element at `index`; outside the list raises `NSRangeException`.
  [[nodiscard]] const Value& objectAtIndex(std::size_t index) const;
  [[nodiscard]] std::size_t count() const { return values_.size(); }
  [[nodiscard]] bool empty() const { return values_.empty(); }
  [[nodiscard]] auto begin() const { return values_.begin(); }
  [[nodiscard]] auto end() const { return values_.end(); }

  friend bool operator==(const List& a, const List& b) { return a.values_ == b.values_; }

 private:
  std::vector<Value> values_;
};

/// A growable dictionary from text keys to values, held by `std::shared_ptr` and shared by everyone
/// who holds it. It enumerates in the order of arrival; replacing a value keeps its place.
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

  Dictionary() = default;
  Dictionary(std::initializer_list<Entry> entries);
  Dictionary(const Dictionary& other);
  Dictionary& operator=(const Dictionary&) = delete;
  /// See `List::~List`.
  ~Dictionary();

  /// Stores. A null value raises `NSInvalidArgumentException`.
  void setObject(Value value, std::string_view key);
  /// Stores under a key that is known to be absent, without looking it up again. A null value
  /// raises `NSInvalidArgumentException`.
  void add_new(Value value, std::string key);
  /// Makes room for that many entries.
  void reserve(std::size_t entries) { entries_.reserve(entries); }
  void removeObjectForKey(std::string_view key);
  /// The value, or null when the key is absent.
  [[nodiscard]] Value objectForKey(std::string_view key) const;
  /// The value, or a null pointer when the key is absent; it lives until the dictionary changes.
  [[nodiscard]] const Value* find(std::string_view key) const;
  /// The same, to be replaced in place by anything but null.
  [[nodiscard]] Value* find(std::string_view key);
  [[nodiscard]] std::size_t count() const { return entries_.size(); }
  [[nodiscard]] bool empty() const { return entries_.empty(); }
  [[nodiscard]] auto begin() const { return entries_.begin(); }
  [[nodiscard]] auto end() const { return entries_.end(); }

  /// Equal when both hold the same keys with equal values, in whatever order.
  friend bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  /// Positions in `entries_`, sorted by the key found there. It looks at its own dictionary, so it
  /// is neither copied nor moved.
  struct ByKey {
    using is_transparent = void;
    const std::vector<Entry>* entries;
    [[nodiscard]] std::string_view key(std::uint32_t position) const {
      return (*entries)[position].key;
    }
    bool operator()(std::uint32_t a, std::uint32_t b) const { return key(a) < key(b); }
    bool operator()(std::uint32_t a, std::string_view b) const { return key(a) < b; }
    bool operator()(std::string_view a, std::uint32_t b) const { return a < key(b); }
  };
  static constexpr std::size_t kLinearLimit = 64;

  [[nodiscard, gnu::visibility("hidden")]] std::size_t position_of(std::string_view key) const;
  [[gnu::visibility("hidden")]] void rebuild_index();

  std::vector<Entry> entries_;
  /// Empty while the dictionary has at most `kLinearLimit` entries.
  std::set<std::uint32_t, ByKey> index_{ByKey{&entries_}};
};

}  // namespace quoll::foundation
