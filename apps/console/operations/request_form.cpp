#include "apps/console/operations/request_form.h"

#include <string>

#include "apps/console/operations/read_value.h"
#include "apps/console/operations/write_value.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/text.h"

namespace quoll::console {

namespace {

using foundation::Bytes;
using foundation::NSMutableURLRequest;

Bytes read_body(const Json& json) {
  if (json.is_string()) {
    const auto& text = json.get_ref<const std::string&>();
    return {text.begin(), text.end()};
  }
  if (!json.is_object() || json.size() != 1 || !json.contains("$data")) {
    throw Refused("a request's body is neither a text nor {\"$data\": BASE64}");
  }
  return bytes_in(json["$data"], "$data");
}

void read_headers(NSMutableURLRequest& request, const Json& json) {
  require_object(json, "a request's headers");
  for (const auto& [name, value] : json.get_ref<const Json::object_t&>()) {
    request.addValue(text_in(value, "a header field"), name);
  }
}

Json write_body(const std::optional<Bytes>& body) {
  if (!body) {
    return nullptr;
  }
  const std::string text(body->begin(), body->end());
  return foundation::is_utf8(text) ? Json(text) : Json{{"$data", foundation::base64_encode(*body)}};
}

}  // namespace

std::shared_ptr<NSMutableURLRequest> read_request(const Json& json) {
  require_object(json, "$request");
  auto request = NSMutableURLRequest::requestWithURL(nullptr);
  for (const auto& [key, value] : json.get_ref<const Json::object_t&>()) {
    const bool known = key == "url" || key == "method" || key == "headers" || key == "body";
    if (!known) {
      throw Refused("$request has no " + key);
    }
    if (value.is_null()) {
      continue;
    }
    if (key == "url") {
      request->setURL(foundation::NSURL::URLWithString(text_in(value, "a request's url")));
    } else if (key == "method") {
      request->setHTTPMethod(text_in(value, "a request's method"));
    } else if (key == "headers") {
      read_headers(*request, value);
    } else {
      request->setHTTPBody(read_body(value));
    }
  }
  return request;
}

Json write_request(const foundation::NSURLRequest& request) {
  Json headers = Json::object();
  for (const auto& [name, value] : request.allHTTPHeaderFields()) {
    append(headers, foundation::utf8_with_escapes(name), json_text(value));
  }
  return {{"url", request.URL() ? json_text(request.URL()->absoluteString()) : Json()},
          {"method", json_text(request.HTTPMethod())},
          {"headers", std::move(headers)},
          {"body", write_body(request.HTTPBody())}};
}

}  // namespace quoll::console
