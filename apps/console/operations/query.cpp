#include "apps/console/operations/binding.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

std::vector<Operation> query_operations() {
  namespace Utils = RequestUtils;
  using foundation::Dictionary;
  return {
      text_operation<Utils::URLEncodedString>("URLEncodedString"),
      text_operation<Utils::URLDecodedString>("URLDecodedString:"),
      text_operation<Utils::rangeOfURLQuery>("rangeOfURLQuery"),
      text_operation<Utils::URLQuery>("URLQuery"),
      class_operation<overload<std::string(const Dictionary&)>(Utils::URLQueryWithParameters)>(
          "URLQueryWithParameters:", "NSString"),
      class_operation<overload<std::string(const Dictionary&, Utils::URLQueryOptions)>(
          Utils::URLQueryWithParameters)>("URLQueryWithParameters:options:", "NSString"),
      text_operation<Utils::URLQueryParameters>("URLQueryParameters"),
      text_operation<Utils::URLQueryParametersWithOptions>("URLQueryParametersWithOptions:"),
  };
}

}  // namespace quoll::console
