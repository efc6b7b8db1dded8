#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/requestutils/http_request.h"

namespace quoll::console {

namespace {

using foundation::Dictionary;
using foundation::NSMutableURLRequest;
using foundation::NSURL;
using foundation::Value;
using RequestUtils::URLQueryOptions;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;
/// The class of all requests here: those that the console makes can be changed.
constexpr const char* kRequest = "NSMutableURLRequest";

NSMutableURLRequest& receiver(const Call& call) {
  return static_cast<NSMutableURLRequest&>(*call.self.object());
}

std::shared_ptr<NSURL> url_argument(const Value& value) {
  return object_argument<NSURL>(value, "a URL");
}

Value list_of(const std::optional<std::vector<std::string>>& texts) {
  return texts ? Value(foundation::List(std::vector<Value>(texts->begin(), texts->end())))
               : Value();
}

using Build = std::shared_ptr<NSMutableURLRequest>(std::shared_ptr<NSURL>, const Dictionary&);

template <Build* kBuild>
Operation building(const char* name) {
  return {name, "NSURLRequest", kClass, 2, [](Call& call) -> Value {
            return kBuild(url_argument(call.arguments[0]), dictionary_argument(call.arguments[1]));
          }};
}

using Set = void(NSMutableURLRequest&, const Dictionary&);

template <Set* kSet>
Operation setting(const char* name) {
  return {name,
          kRequest,
          kInstance,
          1,
          [](Call& call) -> Value {
            kSet(receiver(call), dictionary_argument(call.arguments[0]));
            return {};
          },
          true};
}

using SetWithOptions = void(NSMutableURLRequest&, const Dictionary&, URLQueryOptions);

template <SetWithOptions* kSet>
Operation setting_with_options(const char* name) {
  return {name,
          kRequest,
          kInstance,
          2,
          [](Call& call) -> Value {
            kSet(receiver(call), dictionary_argument(call.arguments[0]),
                 options_argument(call.arguments[1]));
            return {};
          },
          true};
}

}  // namespace

std::vector<Operation> request_operations() {
  namespace Utils = RequestUtils;
  return {
      {"HTTPRequestWithURL:method:parameters:", "NSURLRequest", kClass, 3,
       [](Call& call) -> Value {
         return Utils::HTTPRequestWithURL(url_argument(call.arguments[0]),
                                          text_argument(call.arguments[1]),
                                          dictionary_argument(call.arguments[2]));
       }},
      building<Utils::GETRequestWithURL>("GETRequestWithURL:parameters:"),
      building<Utils::POSTRequestWithURL>("POSTRequestWithURL:parameters:"),
      {"GETParameters", kRequest, kInstance, 0,
       [](Call& call) -> Value { return Utils::GETParameters(receiver(call)); }},
      {"POSTParameters", kRequest, kInstance, 0,
       [](Call& call) -> Value { return Utils::POSTParameters(receiver(call)); }},
      {"HTTPBasicAuthComponents", kRequest, kInstance, 0,
       [](Call& call) { return list_of(Utils::HTTPBasicAuthComponents(receiver(call))); }},
      {"HTTPBasicAuthUser", kRequest, kInstance, 0,
       [](Call& call) { return optional_text(Utils::HTTPBasicAuthUser(receiver(call))); }},
      {"HTTPBasicAuthPassword", kRequest, kInstance, 0,
       [](Call& call) { return optional_text(Utils::HTTPBasicAuthPassword(receiver(call))); }},
      setting<Utils::setGETParameters>("setGETParameters:"),
      setting_with_options<Utils::setGETParameters>("setGETParameters:options:"),
      setting_with_options<Utils::addGETParameters>("addGETParameters:options:"),
      setting<Utils::setPOSTParameters>("setPOSTParameters:"),
      setting_with_options<Utils::setPOSTParameters>("setPOSTParameters:options:"),
      setting_with_options<Utils::addPOSTParameters>("addPOSTParameters:options:"),
      {"setHTTPBasicAuthUser:password:", kRequest, kInstance, 2,
       [](Call& call) -> Value {
         Utils::setHTTPBasicAuthUser(receiver(call), optional_text_argument(call.arguments[0]),
                                     optional_text_argument(call.arguments[1]));
         return {};
       },
       true},
  };
}

}  // namespace quoll::console
