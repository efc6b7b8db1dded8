#include "quoll/requestutils/url_components.h"

#include "apps/console/operations/binding.h"
#include "quoll/foundation/nsurl.h"

namespace quoll::console {

namespace {

using foundation::NSURL;

template <auto kFunction>
Operation of_url(std::string name) {
  return instance_operation<kFunction>(std::move(name), "NSURL");
}

}  // namespace

std::vector<Operation> components_operations() {
  namespace Utils = RequestUtils;
  using Url = std::shared_ptr<NSURL>;
  return {
      class_operation<overload<Url(std::string_view)>(NSURL::URLWithString)>("URLWithString:",
                                                                             "NSURL"),
      class_operation<overload<Url(std::string_view, Url)>(NSURL::URLWithString)>(
          "URLWithString:relativeToURL:", "NSURL"),
      of_url<&NSURL::absoluteString>("absoluteString"),
      of_url<&NSURL::relativeString>("relativeString"),
      of_url<&NSURL::baseURL>("baseURL"),
      of_url<&NSURL::scheme>("scheme"),
      of_url<&NSURL::host>("host"),
      of_url<&NSURL::port>("port"),
      of_url<&NSURL::user>("user"),
      of_url<&NSURL::password>("password"),
      of_url<&NSURL::path>("path"),
      of_url<&NSURL::parameterString>("parameterString"),
      of_url<&NSURL::query>("query"),
      of_url<&NSURL::fragment>("fragment"),
      of_url<&NSURL::isFileURL>("isFileURL"),
      class_operation<Utils::URLWithComponents>("URLWithComponents:", "NSURL"),
      of_url<Utils::components>("components"),
      of_url<Utils::URLWithValue>("URLWithValue:forComponent:"),
      of_url<Utils::URLWithScheme>("URLWithScheme:"),
      of_url<Utils::URLWithHost>("URLWithHost:"),
      of_url<Utils::URLWithPort>("URLWithPort:"),
      of_url<Utils::URLWithUser>("URLWithUser:"),
      of_url<Utils::URLWithPassword>("URLWithPassword:"),
      of_url<Utils::URLWithPath>("URLWithPath:"),
      of_url<Utils::URLWithParameterString>("URLWithParameterString:"),
      of_url<Utils::URLWithQuery>("URLWithQuery:"),
      of_url<Utils::URLWithFragment>("URLWithFragment:"),
  };
}

}  // namespace quoll::console
