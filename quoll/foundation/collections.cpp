#include "quoll/foundation/collections.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <utility>

#include "quoll/foundation/exception.h"

namespace quoll::foundation {

namespace {

/// Releases values one after the other. The first container of this thread to arrive empties the
/// queue, which is its own; those that it frees only add to it. (A pointer, because containers with
/// static storage are released when this thread's other objects are gone.)
void release(std::vector<Value> values) {
  thread_local std::vector<Value>* queue = nullptr;
  if (queue != nullptr) {
    std::move(values.begin(), values.end(), std::back_inserter(*queue));
    return;
  }
  queue = &values;
  while (!values.empty()) {
    const Value last = std::move(values.back());
    values.pop_back();
  }
  queue = nullptr;
}

void refuse_null_in_list(const Value& value) {
  if (value.is_null()) {
    raise_invalid_argument("a list cannot hold null");
  }
}

void refuse_null(const Value& value, std::string_view key) {
  if (value.is_null()) {
    raise_invalid_argument("a dictionary cannot hold null (key: " + std::string(key) + ")");
  }
}

template <typename Storage>
Storage& changeable(const std::shared_ptr<Storage>& storage) {
  if (!storage) {
    raise_invalid_argument("a null list or dictionary cannot be changed");
  }
  return *storage;
}

}  // namespace

namespace detail {

struct [[gnu::visibility("hidden")]] ListStorage {
  explicit ListStorage(std::vector<Value> initial) : values(std::move(initial)) {}
  ListStorage(const ListStorage&) = delete;
  ListStorage& operator=(const ListStorage&) = delete;
  /// Nested lists and dictionaries are released one after the other, not one inside the other, so
  /// that no depth exhausts the stack.
  ~ListStorage() {
    if (std::any_of(values.begin(), values.end(),
                    [](const Value& value) { return value.nests(); })) {
      release(std::move(values));
    }
  }

  std::vector<Value> values;
};

struct [[gnu::visibility("hidden")]] DictionaryStorage {
  using Entry = Dictionary::Entry;

  DictionaryStorage() = default;
  DictionaryStorage(const DictionaryStorage&) = delete;
  DictionaryStorage& operator=(const DictionaryStorage&) = delete;
  /// See `ListStorage::~ListStorage`.
  ~DictionaryStorage() {
    std::vector<Value> nested;
    for (Entry& entry : entries) {
      if (entry.value.nests()) {
        nested.push_back(std::move(entry.value));
      }
    }
    if (!nested.empty()) {
      release(std::move(nested));
    }
  }

  [[nodiscard]] std::size_t position_of(std::string_view key) const {
    if (!index.empty()) {
      const auto found = index.find(key);
      return found == index.end() ? entries.size() : *found;
    }
    // The last characters first: keys that differ in a number at their end are the usual ones.
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) {
      return entry.key.size() == key.size() &&
             (key.empty() || (entry.key.back() == key.back() && entry.key == key));
    });
    return static_cast<std::size_t>(found - entries.begin());
  }

  void rebuild_index() {
    index.clear();
    if (entries.size() > kLinearLimit) {
      for (std::uint32_t position = 0; position < entries.size(); ++position) {
        index.insert(position);
      }
    }
  }

  void add(std::string key, Value value) {
    entries.push_back({std::move(key), std::move(value)});
    if (index.empty()) {
      rebuild_index();
    } else {
      index.insert(static_cast<std::uint32_t>(entries.size() - 1));
    }
  }

  /// Positions in `entries`, sorted by the key found there.
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

  std::vector<Entry> entries;
  /// Empty while there are at most `kLinearLimit` entries.
  std::set<std::uint32_t, ByKey> index{ByKey{&entries}};
};

}  // namespace detail

List::List() : List(std::vector<Value>()) {}

List::List(std::initializer_list<Value> values) : List(std::vector<Value>(values)) {}

List::List(std::vector<Value> values) {
  std::for_each(values.begin(), values.end(), refuse_null_in_list);
  storage_ = std::make_shared<Storage>(std::move(values));
}

List List::copy() const {
  return storage_ ? List(storage_->values) : List(nullptr);
}

void List::addObject(Value value) {
  refuse_null_in_list(value);
  changeable(storage_).values.push_back(std::move(value));
}

Value List::objectAtIndex(std::size_t index) const {
  if (index >= count()) {
    raise_range("index " + std::to_string(index) + " is beyond a list of " +
                std::to_string(count()));
  }
  return storage_->values[index];
}

std::size_t List::count() const {
  return storage_ ? storage_->values.size() : 0;
}

const Value* List::begin() const& {
  return storage_ ? storage_->values.data() : nullptr;
}

const Value* List::end() const& {
  return begin() + count();
}

bool operator==(const List& a, const List& b) {
  return a.storage_ == b.storage_ ||
         (a.storage_ && b.storage_ && a.storage_->values == b.storage_->values);
}

Dictionary::Dictionary() : storage_(std::make_shared<Storage>()) {}

Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary() {
  for (const Entry& entry : entries) {
    setObject(entry.value, entry.key);
  }
}

Dictionary Dictionary::copy() const {
  if (!storage_) {
    return nullptr;
  }
  Dictionary copied;
  copied.storage_->entries = storage_->entries;
  copied.storage_->rebuild_index();
  return copied;
}

void Dictionary::setObject(Value value, std::string_view key) {
  Value* const present = found(key);
  if (present == nullptr) {
    add_new(std::move(value), std::string(key));
  } else {
    refuse_null(value, key);
    *present = std::move(value);
  }
}

void Dictionary::add_new(Value value, std::string key) {
  refuse_null(value, key);
  changeable(storage_).add(std::move(key), std::move(value));
}

void Dictionary::reserve(std::size_t entries) {
  changeable(storage_).entries.reserve(entries);
}

void Dictionary::removeObjectForKey(std::string_view key) {
  Storage& storage = changeable(storage_);
  const std::size_t position = storage.position_of(key);
  if (position < storage.entries.size()) {
    storage.index.clear();
    storage.entries.erase(storage.entries.begin() + static_cast<std::ptrdiff_t>(position));
    storage.rebuild_index();
  }
}

Value* Dictionary::found(std::string_view key) const {
  const std::size_t position = storage_ ? storage_->position_of(key) : 0;
  return position < count() ? &storage_->entries[position].value : nullptr;
}

const Value* Dictionary::find(std::string_view key) const& {
  return found(key);
}

Value* Dictionary::find(std::string_view key) & {
  return found(key);
}

Value Dictionary::objectForKey(std::string_view key) const {
  const Value* value = found(key);
  return value == nullptr ? Value() : *value;
}

std::size_t Dictionary::count() const {
  return storage_ ? storage_->entries.size() : 0;
}

const Dictionary::Entry* Dictionary::begin() const& {
  return storage_ ? storage_->entries.data() : nullptr;
}

const Dictionary::Entry* Dictionary::end() const& {
  return begin() + count();
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  return a.storage_ == b.storage_ ||
         (a && b && a.count() == b.count() &&
          std::all_of(a.begin(), a.end(), [&](const Dictionary::Entry& entry) {
            const Value* other = b.find(entry.key);
            return other != nullptr && *other == entry.value;
          }));
}

}  // namespace quoll::foundation
