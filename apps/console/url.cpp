#include <string>
#include <string_view>

#include "apps/console/commands.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/output.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/printable.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

using foundation::NSURL;

/// The parameters of the query, with a list for a key that is repeated.
Json parameters_of(const NSURL& url) {
  const auto query = url.query();
  if (!query) {
    return Json::object();
  }
  return write_value(RequestUtils::URLQueryParametersWithOptions(
      "?" + *query, RequestUtils::URLQueryCollectValues));
}

std::string words(const Json& value) {
  return value.is_string() ? value.get<std::string>() : json_line(value);
}

}  // namespace

int url(const std::string& text, bool as_json) {
  constexpr std::size_t kLongest = 160;
  constexpr std::size_t kColumn = 17;
  const auto url = NSURL::URLWithString(text);
  if (!url) {
    return complain(foundation::printable(text, kLongest) +
                    " is not a URL: it is empty or holds a character that must be escaped");
  }
  const Json components = write_value(RequestUtils::components(*url));
  Json parameters = Json::object();
  try {
    parameters = parameters_of(*url);
  } catch (const foundation::NSException&) {
    complain("the query is not percent-encoded UTF-8; its parameters are left out");
  }
  if (as_json) {
    print_json({{"components", components}, {"parameters", parameters}});
    return finish();
  }
  for (const auto& [key, value] : components.items()) {
    print_line(key + ":", kColumn, words(value));
  }
  for (const auto& [key, value] : parameters.items()) {
    print_line("  " + foundation::printable(key) + ":", kColumn, words(value));
  }
  return finish();
}

}  // namespace quoll::console
