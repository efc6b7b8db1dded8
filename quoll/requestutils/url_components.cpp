#include "quoll/requestutils/url_components.h"

#include <optional>
#include <string>
#include <utility>

#include "quoll/requestutils/url_query.h"

namespace quoll::RequestUtils {

constinit const std::string_view URLSchemeComponent = "scheme";
constinit const std::string_view URLHostComponent = "host";
constinit const std::string_view URLPortComponent = "port";
constinit const std::string_view URLUserComponent = "user";
constinit const std::string_view URLPasswordComponent = "password";
constinit const std::string_view URLPathComponent = "path";
constinit const std::string_view URLParameterStringComponent = "parameterString";
constinit const std::string_view URLQueryComponent = "query";
constinit const std::string_view URLFragmentComponent = "fragment";

namespace {

using foundation::Dictionary;
using foundation::NSURL;
using foundation::Value;

/// Builds the text of a URL, piece by piece from the front.
class Assembly {
 public:
  explicit Assembly(const Dictionary& components) : components_(components) {}

  /// Adds a component that has to be a text. Raises when it is not.
  bool add_text(std::string_view key) {
    const Value* const value = components_.find(key);
    if (value != nullptr) {
      text_ += *value->stringValue();
    }
    return value != nullptr;
  }

  /// Adds a component of any kind, as `description` writes it, after its mark (such as ":").
  void add_described(const char* mark, std::string_view key) {
    if (const Value* const value = components_.find(key)) {
      text_ += mark;
      text_ += value->text() != nullptr ? *value->text() : value->description();
    }
  }

  void add_query() {
    const Value* const query = components_.find(URLQueryComponent);
    const auto parameters = query != nullptr ? query->as<Dictionary>() : nullptr;
    if (parameters) {
      text_.append("?").append(URLQueryWithParameters(parameters));
    } else {
      add_described("?", URLQueryComponent);
    }
  }

  void add_mark(const char* mark) { text_ += mark; }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  const Dictionary& components_;
  std::string text_;
};

template <typename T>
void store(Dictionary& dictionary, std::string_view key, std::optional<T> component) {
  if (component) {
    dictionary.setObject(std::move(*component), key);
  }
}

}  // namespace

std::shared_ptr<NSURL> URLWithComponents(const Dictionary& components) {
  Assembly url(components);
  if (url.add_text(URLSchemeComponent)) {
    url.add_mark("://");
  }
  if (url.add_text(URLUserComponent)) {
    url.add_described(":", URLPasswordComponent);
    url.add_mark("@");
  }
  url.add_text(URLHostComponent);
  url.add_described(":", URLPortComponent);
  url.add_text(URLPathComponent);
  url.add_described(";", URLParameterStringComponent);
  url.add_query();
  url.add_described("#", URLFragmentComponent);
  return NSURL::URLWithString(url.text());
}

Dictionary components(const NSURL& url) {
  constexpr std::size_t kKeys = 9;
  Dictionary found;
  found.reserve(kKeys);
  store(found, URLSchemeComponent, url.scheme());
  store(found, URLHostComponent, url.host());
  store(found, URLPortComponent, url.port());
  store(found, URLUserComponent, url.user());
  store(found, URLPasswordComponent, url.password());
  store(found, URLPathComponent, url.path());
  store(found, URLParameterStringComponent, url.parameterString());
  store(found, URLQueryComponent, url.query());
  store(found, URLFragmentComponent, url.fragment());
  return found;
}

std::shared_ptr<NSURL> URLWithValue(const NSURL& url, const Value& value,
                                    std::string_view forComponent) {
  Dictionary changed = components(url);
  if (value.is_null()) {
    changed.removeObjectForKey(forComponent);
  } else {
    changed.setObject(value, forComponent);
  }
  return URLWithComponents(changed);
}

std::shared_ptr<NSURL> URLWithScheme(const NSURL& url, std::string_view scheme) {
  const std::size_t present = url.scheme().value_or("").size();
  return NSURL::URLWithString(std::string(scheme) + url.absoluteString().substr(present));
}

std::shared_ptr<NSURL> URLWithHost(const NSURL& url, const Value& host) {
  return URLWithValue(url, host, URLHostComponent);
}

std::shared_ptr<NSURL> URLWithPort(const NSURL& url, const Value& port) {
  return URLWithValue(url, port, URLPortComponent);
}

std::shared_ptr<NSURL> URLWithUser(const NSURL& url, const Value& user) {
  return URLWithValue(url, user, URLUserComponent);
}

std::shared_ptr<NSURL> URLWithPassword(const NSURL& url, const Value& password) {
  return URLWithValue(url, password, URLPasswordComponent);
}

std::shared_ptr<NSURL> URLWithParameterString(const NSURL& url, const Value& parameters) {
  return URLWithValue(url, parameters, URLParameterStringComponent);
}

std::shared_ptr<NSURL> URLWithQuery(const NSURL& url, const Value& query) {
  return URLWithValue(url, query, URLQueryComponent);
}

std::shared_ptr<NSURL> URLWithFragment(const NSURL& url, const Value& fragment) {
  return URLWithValue(url, fragment, URLFragmentComponent);
}

std::shared_ptr<NSURL> URLWithPath(const NSURL& url, const Value& password) {
  return URLWithValue(url, password, URLPasswordComponent);
}

}  // namespace quoll::RequestUtils
