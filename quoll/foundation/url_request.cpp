#include "quoll/foundation/url_request.h"

#include <algorithm>

#include "quoll/foundation/format.h"
#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

/// Names of header fields are ASCII; other bytes are themselves.
unsigned char folded(char c) {
  return static_cast<unsigned char>(ascii_lower_case(c));
}

}  // namespace

bool HeaderNameOrder::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return folded(x) < folded(y); });
}

std::optional<std::string> NSURLRequest::valueForHTTPHeaderField(std::string_view field) const {
  const auto found = headers_.find(field);
  return found == headers_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<NSMutableURLRequest> NSMutableURLRequest::requestWithURL(
    std::shared_ptr<NSURL> url) {
  return std::shared_ptr<NSMutableURLRequest>(new NSMutableURLRequest(std::move(url)));
}

void NSMutableURLRequest::addValue(std::string_view value, std::string_view forHTTPHeaderField) {
  const auto found = headers_.find(forHTTPHeaderField);
  if (found == headers_.end()) {
    headers_.emplace(forHTTPHeaderField, value);
  } else {
    found->second += "," + std::string(value);  // it may be a piece of what is there
  }
}

std::string NSMutableURLRequest::description() const {
  return format("NSMutableURLRequest %@", url_);
}

}  // namespace quoll::foundation
