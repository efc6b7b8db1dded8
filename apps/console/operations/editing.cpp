#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/requestutils/base64_text.h"
#include "quoll/requestutils/url_editing.h"
#include "quoll/requestutils/url_value.h"

namespace quoll::console {

namespace {

using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;

/// An operation without arguments.
template <auto kEdit>
Operation editing(const char* name) {
  return {name, "NSString", kInstance, 0, [](Call& call) -> Value {
            if constexpr (requires { optional_text(kEdit(std::string_view())); }) {
              return optional_text(kEdit(text_argument(call.self)));
            } else {
              return kEdit(text_argument(call.self));
            }
          }};
}

/// An operation with one text, which may be null.
template <std::string (*kEdit)(std::string_view, std::optional<std::string_view>)>
Operation editing_by_optional(const char* name) {
  return {name, "NSString", kInstance, 1, [](Call& call) -> Value {
            return kEdit(text_argument(call.self), optional_text_argument(call.arguments[0]));
          }};
}

template <std::string (*kEdit)(std::string_view, std::string_view)>
Operation editing_by_text(const char* name) {
  return {name, "NSString", kInstance, 1, [](Call& call) -> Value {
            return kEdit(text_argument(call.self), text_argument(call.arguments[0]));
          }};
}

}  // namespace

std::vector<Operation> editing_operations() {
  namespace Utils = RequestUtils;
  return {
      editing<Utils::URLFragment>("URLFragment"),
      editing<Utils::stringByDeletingURLFragment>("stringByDeletingURLFragment"),
      editing_by_optional<Utils::stringByAppendingURLFragment>("stringByAppendingURLFragment:"),
      editing<Utils::stringByDeletingURLQuery>("stringByDeletingURLQuery"),
      editing_by_optional<Utils::stringByAppendingURLQuery>("stringByAppendingURLQuery:"),
      editing_by_optional<Utils::stringByReplacingURLQueryWithQuery>(
          "stringByReplacingURLQueryWithQuery:"),
      editing_by_optional<Utils::stringByMergingURLQuery>("stringByMergingURLQuery:"),
      {"stringByMergingURLQuery:options:", "NSString", kInstance, 2,
       [](Call& call) -> Value {
         return Utils::stringByMergingURLQuery(text_argument(call.self),
                                               optional_text_argument(call.arguments[0]),
                                               options_argument(call.arguments[1]));
       }},
      editing<Utils::lastURLPathComponent>("lastURLPathComponent"),
      editing<Utils::stringByDeletingLastURLPathComponent>("stringByDeletingLastURLPathComponent"),
      editing_by_text<Utils::stringByAppendingURLPathComponent>(
          "stringByAppendingURLPathComponent:"),
      editing<Utils::URLPathExtension>("URLPathExtension"),
      editing<Utils::stringByDeletingURLPathExtension>("stringByDeletingURLPathExtension"),
      editing_by_text<Utils::stringByAppendingURLPathExtension>(
          "stringByAppendingURLPathExtension:"),
      editing<Utils::URLValue>("URLValue"),
      {"URLValueRelativeToURL:", "NSString", kInstance, 1,
       [](Call& call) -> Value {
         return Utils::URLValueRelativeToURL(
             text_argument(call.self),
             object_argument<foundation::NSURL>(call.arguments[0], "a URL"));
       }},
      editing<Utils::base64EncodedString>("base64EncodedString"),
      editing<Utils::base64DecodedString>("base64DecodedString"),
  };
}

}  // namespace quoll::console
