#include "quoll/foundation/value.h"

#include <cmath>
#include <limits>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/number_text.h"

namespace quoll::foundation {

namespace {

std::int64_t integer_of(double real) {
  if (std::isnan(real)) {
    return 0;
  }
  // 2^63 is the first real that does not fit; -2^63 is the last that does.
  constexpr double kLimit = 9223372036854775808.0;
  if (real >= kLimit) {
    return std::numeric_limits<std::int64_t>::max();
  }
  if (real <= -kLimit) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return static_cast<std::int64_t>(real);
}

/// The number that a boolean, an integer or a real stands for; false when the value is none.
bool number_of(const Value& value, double& number) {
  if (const bool* boolean = value.boolean()) {
    number = *boolean ? 1 : 0;
  } else if (const std::int64_t* integer = value.integer()) {
    number = static_cast<double>(*integer);
  } else if (const double* real = value.real()) {
    number = *real;
  } else {
    return false;
  }
  return true;
}

}  // namespace

// The texts themselves are not constant, so that `append_text` may change one that nobody shares.
Value::Value(std::string text)
    : held_(std::in_place_type<SharedText>, std::make_shared<std::string>(std::move(text))) {}

Value::Value(Bytes bytes)
    : held_(std::in_place_type<SharedBytes>, std::make_shared<const Bytes>(std::move(bytes))) {}

Value::Value(List list) {
  if (list) {
    held_.emplace<SharedList>(std::move(list.storage_));
  }
}

Value::Value(Dictionary dictionary) {
  if (dictionary) {
    held_.emplace<SharedDictionary>(std::move(dictionary.storage_));
  }
}

const std::string* Value::text() const& {
  const auto* text = std::get_if<SharedText>(&held_);
  return text == nullptr ? nullptr : text->get();
}

const Bytes* Value::bytes() const& {
  const auto* bytes = std::get_if<SharedBytes>(&held_);
  return bytes == nullptr ? nullptr : bytes->get();
}

void Value::append_text(std::string_view more) {
  auto* const held = std::get_if<SharedText>(&held_);
  if (held == nullptr) {
    *this = Value(more);
  } else if (held->use_count() == 1) {
    // Another thread may have held the text until a moment ago. Counting once up and down waits for
    // what it did; the count by itself does not.
    static_cast<void>(SharedText(*held));
    const_cast<std::string&>(**held).append(more);
  } else {
    std::string longer;
    longer.reserve((*held)->size() + more.size());
    *this = Value(std::move(longer.append(**held).append(more)));
  }
}

std::shared_ptr<Object> Value::object() const {
  const auto* object = std::get_if<std::shared_ptr<Object>>(&held_);
  return object == nullptr ? nullptr : *object;
}

std::size_t Value::length() const {
  if (const std::string* held = text()) {
    return held->size();
  }
  if (const Bytes* held = bytes()) {
    return held->size();
  }
  if (!is_null()) {
    raise_wrong_kind("length");
  }
  return 0;
}

std::int64_t Value::integerValue() const {
  if (const std::int64_t* held = integer()) {
    return *held;
  }
  if (const std::string* held = text()) {
    return integer_of_text(*held);
  }
  double number = 0;
  if (!number_of(*this, number) && !is_null()) {
    raise_wrong_kind("integerValue");
  }
  return integer_of(number);
}

bool Value::boolValue() const {
  if (const std::string* held = text()) {
    return boolean_of_text(*held);
  }
  double number = 0;
  if (!number_of(*this, number) && !is_null()) {
    raise_wrong_kind("boolValue");
  }
  return number != 0;
}

float Value::floatValue() const {
  if (const std::string* held = text()) {
    return float_of_text(*held);
  }
  double number = 0;
  if (!number_of(*this, number) && !is_null()) {
    raise_wrong_kind("floatValue");
  }
  return single_precision(number);
}

const std::string* Value::stringValue() const& {
  const std::string* held = text();
  if (held == nullptr && !is_null()) {
    raise_wrong_kind("a text's operation");
  }
  return held;
}

bool Value::isEqualToString(const Value& other) const {
  const std::string* mine = stringValue();
  const std::string* theirs = other.text();
  return mine != nullptr && theirs != nullptr && *mine == *theirs;
}

Value Value::objectForKey(std::string_view key) const {
  const auto dictionary = as<Dictionary>();
  if (!dictionary && !is_null()) {
    raise_wrong_kind("objectForKey:");
  }
  return dictionary.objectForKey(key);
}

List Value::list() const {
  const auto dictionary = as<Dictionary>();
  if (!dictionary) {
    if (!nests() && !is_null()) {
      raise_wrong_kind("enumeration");
    }
    return as<List>();
  }
  List keys;
  for (const Dictionary::Entry& entry : dictionary) {
    keys.addObject(entry.key);
  }
  return keys;
}

std::string_view Value::kind() const {
  constexpr std::string_view kKinds[] = {"null",   "a boolean", "an integer",
                                         "a real", "a date",    "a text",
                                         "bytes",  "a list",    "a dictionary"};
  const auto held = object();
  return held ? held->class_name() : kKinds[held_.index()];
}

void Value::raise_wrong_kind(std::string_view operation) const {
  raise_invalid_argument(std::string(operation) + " was asked of " + std::string(kind()));
}

bool operator==(const Value& a, const Value& b) {
  if (a.integer() != nullptr && b.integer() != nullptr) {
    return *a.integer() == *b.integer();
  }
  double first = 0;
  double second = 0;
  if (number_of(a, first) && number_of(b, second)) {
    return first == second;
  }
  if (a.held_.index() != b.held_.index()) {
    return false;
  }
  return std::visit(
      [&](const auto& mine) {
        using T = std::decay_t<decltype(mine)>;
        const auto& theirs = std::get<T>(b.held_);
        if constexpr (std::is_same_v<T, std::shared_ptr<Object>>) {
          return mine->isEqual(theirs.get());
        } else if constexpr (std::is_same_v<T, Value::SharedList>) {
          return a.as<List>() == b.as<List>();
        } else if constexpr (std::is_same_v<T, Value::SharedDictionary>) {
          return a.as<Dictionary>() == b.as<Dictionary>();
        } else if constexpr (requires { *mine; }) {
          return *mine == *theirs;
        } else {
          return mine == theirs;
        }
      },
      a.held_);
}

}  // namespace quoll::foundation
