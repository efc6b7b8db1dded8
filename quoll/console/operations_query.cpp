#include <optional>

#include "quoll/console/arguments.h"
#include "quoll/console/operation.h"
#include "quoll/foundation/collections.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

using foundation::Value;
using RequestUtils::URLQueryOptions;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;

Value optional_text(std::optional<std::string> text) {
  return text ? Value(std::move(*text)) : Value();
}

Value range(std::optional<foundation::Range> found) {
  if (!found) {
    return {};
  }
  return std::make_shared<foundation::List>(
      foundation::List{Value(found->location), Value(found->length)});
}

/// Only the low 32 bits of a number fit in the options word.
URLQueryOptions options(const Value& value) {
  return static_cast<URLQueryOptions>(integer_argument(value));
}

Value query(const Value& parameters, URLQueryOptions options) {
  const auto dictionary = dictionary_argument(parameters);
  return RequestUtils::URLQueryWithParameters(dictionary ? *dictionary : foundation::Dictionary(),
                                              options);
}

}  // namespace

std::vector<Operation> query_operations() {
  return {
      {"URLEncodedString", "NSString", kInstance, 0,
       [](Call& call) -> Value {
         return RequestUtils::URLEncodedString(text_argument(call.self));
       }},
      {"URLDecodedString:", "NSString", kInstance, 1,
       [](Call& call) {
         return optional_text(RequestUtils::URLDecodedString(text_argument(call.self),
                                                             boolean_argument(call.arguments[0])));
       }},
      {"rangeOfURLQuery", "NSString", kInstance, 0,
       [](Call& call) { return range(RequestUtils::rangeOfURLQuery(text_argument(call.self))); }},
      {"URLQuery", "NSString", kInstance, 0,
       [](Call& call) { return optional_text(RequestUtils::URLQuery(text_argument(call.self))); }},
      {"URLQueryWithParameters:", "NSString", kClass, 1,
       [](Call& call) { return query(call.arguments[0], 0); }},
      {"URLQueryWithParameters:options:", "NSString", kClass, 2,
       [](Call& call) { return query(call.arguments[0], options(call.arguments[1])); }},
      {"URLQueryParameters", "NSString", kInstance, 0,
       [](Call& call) -> Value {
         return RequestUtils::URLQueryParameters(text_argument(call.self));
       }},
      {"URLQueryParametersWithOptions:", "NSString", kInstance, 1,
       [](Call& call) -> Value {
         return RequestUtils::URLQueryParametersWithOptions(text_argument(call.self),
                                                            options(call.arguments[0]));
       }},
  };
}

}  // namespace quoll::console
