#include "apps/console/operations/binding.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

template <auto kFunction>
Operation of_text(std::string name) {
  return instance_operation<kFunction>(std::move(name), "NSString");
}

}  // namespace

std::vector<Operation> query_operations() {
  namespace Utils = RequestUtils;
  using foundation::Dictionary;
  return {
      of_text<Utils::URLEncodedString>("URLEncodedString"),
      of_text<Utils::URLDecodedString>("URLDecodedString:"),
      of_text<Utils::rangeOfURLQuery>("rangeOfURLQuery"),
      of_text<Utils::URLQuery>("URLQuery"),
      class_operation<overload<std::string(const Dictionary&)>(Utils::URLQueryWithParameters)>(
          "URLQueryWithParameters:", "NSString"),
      class_operation<overload<std::string(const Dictionary&, Utils::URLQueryOptions)>(
          Utils::URLQueryWithParameters)>("URLQueryWithParameters:options:", "NSString"),
      of_text<Utils::URLQueryParameters>("URLQueryParameters"),
      of_text<Utils::URLQueryParametersWithOptions>("URLQueryParametersWithOptions:"),
  };
}

}  // namespace quoll::console
