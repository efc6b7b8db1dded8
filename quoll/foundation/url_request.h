#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/value.h"

namespace quoll::foundation {

/// Orders names of header fields, whose letters count without their case.
struct HeaderNameOrder {
  using is_transparent = void;
  [[nodiscard]] bool operator()(std::string_view a, std::string_view b) const;
};

/// `NSURLRequest`: an HTTP request as its readers see it. It has no lock: a request that one thread
/// changes is no other thread's.
class NSURLRequest : public Object {
 public:
  /// By name; a name keeps the spelling that came first.
  using HeaderFields = std::map<std::string, std::string, HeaderNameOrder>;

  /// May be null.
  [[nodiscard]] std::shared_ptr<NSURL> URL() const { return url_; }
  [[nodiscard]] std::string HTTPMethod() const { return method_; }
  [[nodiscard]] HeaderFields allHTTPHeaderFields() const { return headers_; }
  [[nodiscard]] std::optional<std::string> valueForHTTPHeaderField(std::string_view field) const;
  /// None is not the same as empty.
  [[nodiscard]] std::optional<Bytes> HTTPBody() const { return body_; }

 protected:
  explicit NSURLRequest(std::shared_ptr<NSURL> url) : url_(std::move(url)) {}

  std::shared_ptr<NSURL> url_;
  std::string method_ = "GET";
  HeaderFields headers_;
  std::optional<Bytes> body_;
};

/// `NSMutableURLRequest`: a request that can be changed.
class NSMutableURLRequest final : public NSURLRequest {
 public:
  /// `requestWithURL:`: a GET request without header fields and without a body.
  [[nodiscard]] static std::shared_ptr<NSMutableURLRequest> requestWithURL(
      std::shared_ptr<NSURL> url);

  void setURL(std::shared_ptr<NSURL> url) { url_ = std::move(url); }
  void setHTTPMethod(std::string_view method) { method_ = method; }
  /// `addValue:forHTTPHeaderField:`: joined with "," to the value that is there.
  void addValue(std::string_view value, std::string_view forHTTPHeaderField);
  void setHTTPBody(std::optional<Bytes> body) { body_ = std::move(body); }

  [[nodiscard]] std::string_view class_name() const override { return "NSMutableURLRequest"; }
  [[nodiscard]] std::string description() const override;

 private:
  using NSURLRequest::NSURLRequest;
};

}  // namespace quoll::foundation
