#include "quoll/requestutils/http_request.h"

#include <utility>

#include "quoll/foundation/format.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/upper_case.h"
#include "quoll/requestutils/base64_text.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_editing.h"

namespace quoll::RequestUtils {

namespace {

using foundation::Bytes;
using foundation::Dictionary;
using foundation::NSMutableURLRequest;
using foundation::NSURL;
using foundation::NSURLRequest;

constexpr std::string_view kGet = "GET";
constexpr std::string_view kAuthorization = "Authorization";
constexpr std::string_view kBasic = "Basic ";

void set_query(NSMutableURLRequest& request, const std::string& query) {
  request.setURL(request.URL() ? URLWithQuery(*request.URL(), query) : nullptr);
}

/// The body as text; empty when there is none or when it is not UTF-8.
std::string body_text(const NSURLRequest& request) {
  const Bytes body = request.HTTPBody().value_or(Bytes());
  std::string text(body.begin(), body.end());
  return foundation::is_utf8(text) ? text : std::string();
}

void set_form(NSMutableURLRequest& request, const std::string& form) {
  request.addValue("8bit", "Content-Transfer-Encoding");
  request.addValue("application/x-www-form-urlencoded", "Content-Type");
  request.addValue(std::to_string(static_cast<int>(form.size())), "Content-Length");
  request.setHTTPBody(Bytes(form.begin(), form.end()));
}

std::string without_basic(std::string_view value) {
  std::string out;
  for (std::size_t at = value.find(kBasic); at != std::string_view::npos; at = value.find(kBasic)) {
    out += value.substr(0, at);
    value.remove_prefix(at + kBasic.size());
  }
  return out.append(value);
}

std::vector<std::string> split_at_colons(std::string_view text) {
  std::vector<std::string> pieces;
  while (true) {
    const std::size_t colon = text.find(':');
    pieces.emplace_back(text.substr(0, colon));
    if (colon == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(colon + 1);
  }
}

}  // namespace

std::shared_ptr<NSMutableURLRequest> HTTPRequestWithURL(std::shared_ptr<NSURL> url,
                                                        std::string_view method,
                                                        const Dictionary& parameters) {
  auto request = NSMutableURLRequest::requestWithURL(std::move(url));
  request->setHTTPMethod(foundation::upper_case(method));
  if (request->HTTPMethod() == kGet) {
    addGETParameters(*request, parameters, {});
  } else {
    setPOSTParameters(*request, parameters);
  }
  request->addValue("gzip", "Accept-Encoding");
  return request;
}

std::shared_ptr<NSMutableURLRequest> GETRequestWithURL(std::shared_ptr<NSURL> url,
                                                       const Dictionary& parameters) {
  return HTTPRequestWithURL(std::move(url), kGet, parameters);
}

std::shared_ptr<NSMutableURLRequest> POSTRequestWithURL(std::shared_ptr<NSURL> url,
                                                        const Dictionary& parameters) {
  return HTTPRequestWithURL(std::move(url), "POST", parameters);
}

Dictionary GETParameters(const NSURLRequest& request) {
  const auto query = request.URL() ? request.URL()->query() : std::nullopt;
  return query ? URLQueryParameters(*query) : nullptr;
}

Dictionary POSTParameters(const NSURLRequest& request) {
  return URLQueryParameters(body_text(request));
}

void setGETParameters(NSMutableURLRequest& request, const Dictionary& parameters) {
  setGETParameters(request, parameters, {});
}

void setGETParameters(NSMutableURLRequest& request, const Dictionary& parameters,
                      URLQueryOptions options) {
  set_query(request, URLQueryWithParameters(parameters, options));
}

void addGETParameters(NSMutableURLRequest& request, const Dictionary& parameters,
                      URLQueryOptions options) {
  const std::string added = URLQueryWithParameters(parameters, options);
  const auto query = request.URL() ? URLQuery(request.URL()->absoluteString()) : std::nullopt;
  set_query(request, stringByMergingURLQuery(query.value_or(""), added, options));
}

void setPOSTParameters(NSMutableURLRequest& request, const Dictionary& parameters) {
  setPOSTParameters(request, parameters, {});
}

void setPOSTParameters(NSMutableURLRequest& request, const Dictionary& parameters,
                       URLQueryOptions options) {
  set_form(request, URLQueryWithParameters(parameters, options));
}

void addPOSTParameters(NSMutableURLRequest& request, const Dictionary& parameters,
                       URLQueryOptions options) {
  const std::string added = URLQueryWithParameters(parameters, options);
  set_form(request, stringByMergingURLQuery(body_text(request), added, options));
}

void setHTTPBasicAuthUser(NSMutableURLRequest& request, std::optional<std::string_view> user,
                          std::optional<std::string_view> password) {
  const std::string pair = foundation::format("%@:%@", user.value_or(""), password.value_or(""));
  request.addValue(foundation::format("Basic %@", base64EncodedString(pair)), kAuthorization);
}

std::optional<std::vector<std::string>> HTTPBasicAuthComponents(const NSURLRequest& request) {
  if (const auto value = request.valueForHTTPHeaderField(kAuthorization)) {
    const auto pair = base64DecodedString(without_basic(*value));
    return pair ? std::optional(split_at_colons(*pair)) : std::nullopt;
  }
  const auto url = request.URL();
  const auto or_empty = [&](auto accessor) {
    return url ? ((*url).*accessor)().value_or("") : std::string();
  };
  return std::vector{or_empty(&NSURL::user), or_empty(&NSURL::password)};
}

std::optional<std::string> HTTPBasicAuthUser(const NSURLRequest& request) {
  const auto components = HTTPBasicAuthComponents(request);
  return components ? std::optional(components->front()) : std::nullopt;
}

std::optional<std::string> HTTPBasicAuthPassword(const NSURLRequest& request) {
  const auto components = HTTPBasicAuthComponents(request);
  return components && components->size() == 2 ? std::optional(components->back()) : std::nullopt;
}

}  // namespace quoll::RequestUtils
