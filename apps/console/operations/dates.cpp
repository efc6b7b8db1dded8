#include <optional>

#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/records/extension_date.h"

namespace quoll::console {

namespace {

using foundation::Date;
using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;

std::optional<Date> date_argument(const Value& value) {
  const Date* date = value.date();
  if (date == nullptr && !value.is_null()) {
    raise_wrong_argument(value, "a date");
  }
  return date == nullptr ? std::nullopt : std::optional(*date);
}

Value exchange_date(const Call& call) {
  std::optional<std::string_view> text;
  if (!call.arguments[0].is_null()) {
    text = text_argument(call.arguments[0]);
  }
  const auto date = call.self.as<ExtensionDate>()->exchangeDate(text);
  return date ? Value(*date) : Value();
}

}  // namespace

std::vector<Operation> date_operations() {
  return {
      {"shared", "ExtensionDate", kClass, 0,
       [](Call&) -> Value { return ExtensionDate::shared(); }},
      {"Initialize", "ExtensionDate", kInstance, 0,
       [](Call& call) -> Value {
         call.self.as<ExtensionDate>()->Initialize();
         return {};
       }},
      {"IntDate:", "ExtensionDate", kInstance, 1,
       [](Call& call) -> Value {
         return call.self.as<ExtensionDate>()->IntDate(date_argument(call.arguments[0]));
       }},
      {"centralDate:", "ExtensionDate", kInstance, 1,
       [](Call& call) -> Value {
         return call.self.as<ExtensionDate>()->centralDate(date_argument(call.arguments[0]));
       }},
      {"exchangeDate:", "ExtensionDate", kInstance, 1,
       [](Call& call) -> Value { return exchange_date(call); }},
  };
}

}  // namespace quoll::console
