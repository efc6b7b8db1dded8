#include <optional>

#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/foundation/collections.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;

Value range(std::optional<foundation::Range> found) {
  if (!found) {
    return {};
  }
  return foundation::List{Value(found->location), Value(found->length)};
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
       [](Call& call) -> Value {
         return RequestUtils::URLQueryWithParameters(dictionary_argument(call.arguments[0]));
       }},
      {"URLQueryWithParameters:options:", "NSString", kClass, 2,
       [](Call& call) -> Value {
         return RequestUtils::URLQueryWithParameters(dictionary_argument(call.arguments[0]),
                                                     options_argument(call.arguments[1]));
       }},
      {"URLQueryParameters", "NSString", kInstance, 0,
       [](Call& call) -> Value {
         return RequestUtils::URLQueryParameters(text_argument(call.self));
       }},
      {"URLQueryParametersWithOptions:", "NSString", kInstance, 1,
       [](Call& call) -> Value {
         return RequestUtils::URLQueryParametersWithOptions(text_argument(call.self),
                                                            options_argument(call.arguments[0]));
       }},
  };
}

}  // namespace quoll::console
