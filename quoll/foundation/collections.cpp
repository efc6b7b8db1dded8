#include "quoll/foundation/collections.h"

#include <algorithm>
#include <iterator>
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

void refuse_null(const Value& value, std::string_view key) {
  if (value.is_null()) {
    raise_invalid_argument("a dictionary cannot hold null (key: " + std::string(key) + ")");
  }
}

}  // namespace

List::List(std::initializer_list<Value> values) : List(std::vector<Value>(values)) {}

List::List(std::vector<Value> values) {
  for (const Value& value : values) {
    if (value.is_null()) {
      raise_invalid_argument("a list cannot hold null");
    }
  }
  values_ = std::move(values);
}

List::~List() {
  if (std::any_of(values_.begin(), values_.end(),
                  [](const Value& value) { return value.nests(); })) {
    release(std::move(values_));
  }
}

void List::addObject(Value value) {
  if (value.is_null()) {
    raise_invalid_argument("a list cannot hold null");
  }
  values_.push_back(std::move(value));
}

const Value& List::objectAtIndex(std::size_t index) const {
  if (index >= values_.size()) {
    raise_range("index " + std::to_string(index) + " is beyond a list of " +
                std::to_string(values_.size()));
  }
  return values_[index];
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  for (const Entry& entry : entries) {
    setObject(entry.value, entry.key);
  }
}

Dictionary::Dictionary(const Dictionary& other) : entries_(other.entries_) {
  rebuild_index();
}

Dictionary::~Dictionary() {
  std::vector<Value> nested;
  for (Entry& entry : entries_) {
    if (entry.value.nests()) {
      nested.push_back(std::move(entry.value));
    }
  }
  if (!nested.empty()) {
    release(std::move(nested));
  }
}

std::size_t Dictionary::position_of(std::string_view key) const {
  if (!index_.empty()) {
    const auto found = index_.find(key);
    return found == index_.end() ? entries_.size() : *found;
  }
  // The last characters first: keys that differ in a number at their end are the usual ones.
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.key.size() == key.size() &&
           (key.empty() || (entry.key.back() == key.back() && entry.key == key));
  });
  return static_cast<std::size_t>(found - entries_.begin());
}

void Dictionary::rebuild_index() {
  index_.clear();
  if (entries_.size() > kLinearLimit) {
    for (std::uint32_t position = 0; position < entries_.size(); ++position) {
      index_.insert(position);
    }
  }
}

void Dictionary::setObject(Value value, std::string_view key) {
  Value* const present = find(key);
  if (present == nullptr) {
    add_new(std::move(value), std::string(key));
  } else {
    refuse_null(value, key);
    *present = std::move(value);
  }
}

void Dictionary::add_new(Value value, std::string key) {
  refuse_null(value, key);
  entries_.push_back({std::move(key), std::move(value)});
  if (index_.empty()) {
    rebuild_index();
  } else {
    index_.insert(static_cast<std::uint32_t>(entries_.size() - 1));
  }
}

void Dictionary::removeObjectForKey(std::string_view key) {
  const std::size_t position = position_of(key);
  if (position < entries_.size()) {
    index_.clear();
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    rebuild_index();
  }
}

Value* Dictionary::find(std::string_view key) {
  const std::size_t position = position_of(key);
  return position < entries_.size() ? &entries_[position].value : nullptr;
}

const Value* Dictionary::find(std::string_view key) const {
  const std::size_t position = position_of(key);
  return position < entries_.size() ? &entries_[position].value : nullptr;
}

Value Dictionary::objectForKey(std::string_view key) const {
  const Value* value = find(key);
  return value == nullptr ? Value() : *value;
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  return a.count() == b.count() &&
         std::all_of(a.begin(), a.end(), [&](const Dictionary::Entry& entry) {
           const Value* other = b.find(entry.key);
           return other != nullptr && *other == entry.value;
         });
}

}  // namespace quoll::foundation
