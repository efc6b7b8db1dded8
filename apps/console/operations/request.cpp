#include "apps/console/operations/binding.h"
#include "quoll/requestutils/http_request.h"

namespace quoll::console {

namespace {

using foundation::Dictionary;
using foundation::NSMutableURLRequest;
using RequestUtils::URLQueryOptions;

/// The class of all requests here: those that the console makes can be changed.
constexpr const char* kRequest = "NSMutableURLRequest";

using Set = void(NSMutableURLRequest&, const Dictionary&);
using SetWithOptions = void(NSMutableURLRequest&, const Dictionary&, URLQueryOptions);

template <Set* kSet>
Operation setting(std::string name) {
  return changing_operation<kSet>(std::move(name), kRequest);
}
template <SetWithOptions* kSet>
Operation setting_with_options(std::string name) {
  return changing_operation<kSet>(std::move(name), kRequest);
}

}  // namespace

std::vector<Operation> request_operations() {
  namespace Utils = RequestUtils;
  return {
      class_operation<Utils::HTTPRequestWithURL>("HTTPRequestWithURL:method:parameters:",
                                                 "NSURLRequest"),
      class_operation<Utils::GETRequestWithURL>("GETRequestWithURL:parameters:", "NSURLRequest"),
      class_operation<Utils::POSTRequestWithURL>("POSTRequestWithURL:parameters:", "NSURLRequest"),
      instance_operation<Utils::GETParameters>("GETParameters", kRequest),
      instance_operation<Utils::POSTParameters>("POSTParameters", kRequest),
      instance_operation<Utils::HTTPBasicAuthComponents>("HTTPBasicAuthComponents", kRequest),
      instance_operation<Utils::HTTPBasicAuthUser>("HTTPBasicAuthUser", kRequest),
      instance_operation<Utils::HTTPBasicAuthPassword>("HTTPBasicAuthPassword", kRequest),
      setting<Utils::setGETParameters>("setGETParameters:"),
      setting_with_options<Utils::setGETParameters>("setGETParameters:options:"),
      setting_with_options<Utils::addGETParameters>("addGETParameters:options:"),
      setting<Utils::setPOSTParameters>("setPOSTParameters:"),
      setting_with_options<Utils::setPOSTParameters>("setPOSTParameters:options:"),
      setting_with_options<Utils::addPOSTParameters>("addPOSTParameters:options:"),
      changing_operation<Utils::setHTTPBasicAuthUser>("setHTTPBasicAuthUser:password:", kRequest),
  };
}

}  // namespace quoll::console
