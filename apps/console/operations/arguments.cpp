#include "apps/console/operations/arguments.h"

namespace quoll::console {

using foundation::Value;

void raise_wrong_argument(const Value& value, std::string_view wanted) {
  foundation::raise_invalid_argument(std::string(wanted) + " was wanted, not " +
                                     std::string(value.kind()));
}

const std::string& text_argument(const Value& value) {
  const std::string* text = value.text();
  if (text == nullptr) {
    raise_wrong_argument(value, "a text");
  }
  return *text;
}

std::optional<std::string_view> optional_text_argument(const Value& value) {
  return value.is_null() ? std::nullopt : std::optional<std::string_view>(text_argument(value));
}

std::int64_t integer_argument(const Value& value) {
  if (value.text() != nullptr) {
    raise_wrong_argument(value, "a number");
  }
  return value.integerValue();
}

bool boolean_argument(const Value& value) {
  if (value.text() != nullptr) {
    raise_wrong_argument(value, "a boolean");
  }
  return value.boolValue();
}

RequestUtils::URLQueryOptions options_argument(const Value& value) {
  return static_cast<RequestUtils::URLQueryOptions>(integer_argument(value));
}

foundation::List list_argument(const Value& value) {
  auto list = value.as<foundation::List>();
  if (!list && !value.is_null()) {
    raise_wrong_argument(value, "a list");
  }
  return list;
}

foundation::Dictionary dictionary_argument(const Value& value) {
  auto dictionary = value.as<foundation::Dictionary>();
  if (!dictionary && !value.is_null()) {
    raise_wrong_argument(value, "a dictionary");
  }
  return dictionary;
}

std::optional<foundation::Date> date_argument(const Value& value) {
  const foundation::Date* date = value.date();
  if (date == nullptr && !value.is_null()) {
    raise_wrong_argument(value, "a date");
  }
  return date == nullptr ? std::nullopt : std::optional(*date);
}

}  // namespace quoll::console
