#include <iostream>
#include <string>
#include <string_view>

#include "apps/console/commands.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/write_value.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/printable.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

using console::Json;
using foundation::NSURL;

/// The parameters of the query, with a list for a key that is repeated.
Json parameters_of(const NSURL& url) {
  const auto query = url.query();
  if (!query) {
    return Json::object();
  }
  return console::write_value(RequestUtils::URLQueryParametersWithOptions(
      "?" + *query, RequestUtils::URLQueryCollectValues));
}

void print_line(std::string_view label, const std::string& text) {
  constexpr std::size_t kColumn = 17;
  std::cout << label << ':'
            << std::string(label.size() + 1 < kColumn ? kColumn - label.size() - 1 : 1, ' ')
            << foundation::printable(text) << '\n';
}

std::string words(const Json& value) {
  return value.is_string() ? value.get<std::string>() : console::json_line(value);
}

int refuse(const std::string& text, std::string_view why) {
  constexpr std::size_t kLongest = 160;
  std::cerr << "quollctl: " << foundation::printable(text, kLongest) << ' ' << why << '\n';
  return 1;
}

}  // namespace

int url(const std::string& text, bool as_json) {
  const auto url = NSURL::URLWithString(text);
  if (!url) {
    return refuse(text, "is not a URL: it is empty or holds a character that must be escaped");
  }
  const Json components = console::write_value(RequestUtils::components(*url));
  Json parameters = Json::object();
  try {
    parameters = parameters_of(*url);
  } catch (const foundation::NSException&) {
    std::cerr << "quollctl: the query is not percent-encoded UTF-8; its parameters are left out\n";
  }
  if (as_json) {
    std::cout << console::json_line({{"components", components}, {"parameters", parameters}})
              << '\n';
    return std::cout.flush() ? 0 : 1;
  }
  for (const auto& [key, value] : components.items()) {
    print_line(key, words(value));
  }
  for (const auto& [key, value] : parameters.items()) {
    print_line("  " + foundation::printable(key), words(value));
  }
  return std::cout.flush() ? 0 : 1;
}

}  // namespace quoll::console
