#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/requestutils/url_components.h"

namespace quoll::console {

namespace {

using foundation::NSURL;
using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;

const NSURL& receiver(const Call& call) {
  return static_cast<const NSURL&>(*call.self.object());
}

Value result(std::optional<std::string> text) {
  return optional_text(std::move(text));
}
Value result(std::optional<std::int64_t> number) {
  return number ? Value(*number) : Value();
}
Value result(bool truth) {
  return truth;
}
Value result(const std::shared_ptr<NSURL>& url) {
  return url;
}

template <auto kAccessor>
Operation accessor(const char* name) {
  return {name, "NSURL", kInstance, 0,
          [](Call& call) { return result((receiver(call).*kAccessor)()); }};
}

template <std::shared_ptr<NSURL> (*kReplace)(const NSURL&, const Value&)>
Operation replacing(const char* name) {
  return {name, "NSURL", kInstance, 1,
          [](Call& call) -> Value { return kReplace(receiver(call), call.arguments[0]); }};
}

}  // namespace

std::vector<Operation> components_operations() {
  namespace Utils = RequestUtils;
  return {
      {"URLWithString:", "NSURL", kClass, 1,
       [](Call& call) -> Value { return NSURL::URLWithString(text_argument(call.arguments[0])); }},
      {"URLWithString:relativeToURL:", "NSURL", kClass, 2,
       [](Call& call) -> Value {
         return NSURL::URLWithString(text_argument(call.arguments[0]),
                                     object_argument<NSURL>(call.arguments[1], "a URL"));
       }},
      accessor<&NSURL::absoluteString>("absoluteString"),
      accessor<&NSURL::relativeString>("relativeString"),
      accessor<&NSURL::baseURL>("baseURL"),
      accessor<&NSURL::scheme>("scheme"),
      accessor<&NSURL::host>("host"),
      accessor<&NSURL::port>("port"),
      accessor<&NSURL::user>("user"),
      accessor<&NSURL::password>("password"),
      accessor<&NSURL::path>("path"),
      accessor<&NSURL::parameterString>("parameterString"),
      accessor<&NSURL::query>("query"),
      accessor<&NSURL::fragment>("fragment"),
      accessor<&NSURL::isFileURL>("isFileURL"),
      {"URLWithComponents:", "NSURL", kClass, 1,
       [](Call& call) -> Value {
         return Utils::URLWithComponents(dictionary_argument(call.arguments[0]));
       }},
      {"components", "NSURL", kInstance, 0,
       [](Call& call) -> Value { return Utils::components(receiver(call)); }},
      {"URLWithValue:forComponent:", "NSURL", kInstance, 2,
       [](Call& call) -> Value {
         return Utils::URLWithValue(receiver(call), call.arguments[0],
                                    text_argument(call.arguments[1]));
       }},
      {"URLWithScheme:", "NSURL", kInstance, 1,
       [](Call& call) -> Value {
         return Utils::URLWithScheme(receiver(call), text_argument(call.arguments[0]));
       }},
      replacing<Utils::URLWithHost>("URLWithHost:"),
      replacing<Utils::URLWithPort>("URLWithPort:"),
      replacing<Utils::URLWithUser>("URLWithUser:"),
      replacing<Utils::URLWithPassword>("URLWithPassword:"),
      replacing<Utils::URLWithPath>("URLWithPath:"),
      replacing<Utils::URLWithParameterString>("URLWithParameterString:"),
      replacing<Utils::URLWithQuery>("URLWithQuery:"),
      replacing<Utils::URLWithFragment>("URLWithFragment:"),
  };
}

}  // namespace quoll::console
