// Makes a request with any URL, parameters, user and password. What is set is read back.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/text.h"
#include "quoll/requestutils/http_request.h"

namespace {

namespace Utils = quoll::RequestUtils;
using quoll::foundation::Dictionary;
using quoll::foundation::NSURL;
using quoll::fuzz::require;
using quoll::fuzz::Script;

Dictionary parameters_of(Script& script) {
  Dictionary parameters;
  for (unsigned left = script.choice(4); left > 0; --left) {
    const std::string key = quoll::foundation::utf8_with_escapes(script.text(12));
    parameters.setObject(quoll::foundation::utf8_with_escapes(script.text(12)), key);
  }
  return parameters;
}

/// Checks that keys come back with their values. Empty keys, and keys that look like those of
/// lists, are not expected to.
void check_back(const Dictionary& set, const Dictionary& back) {
  for (const auto& [key, value] : set) {
    if (!key.empty() && !key.ends_with("[]")) {
      require(back.objectForKey(key) == value);
    }
  }
}

void check_body(const std::shared_ptr<NSURL>& url, const Dictionary& parameters) {
  const auto request = Utils::POSTRequestWithURL(url, parameters);
  check_back(parameters, Utils::POSTParameters(*request));
}

/// Sets the query twice, because building a URL again may change the rest of it. Without a scheme
/// and a host it may become another kind of URL.
void check_query(const std::shared_ptr<NSURL>& url, const Dictionary& parameters) {
  const auto request = Utils::GETRequestWithURL(url, {});
  for (int i = 0; i < 2; ++i) {
    Utils::setGETParameters(*request, parameters);
    if (request->URL() && url->scheme() && url->host() && !parameters.empty()) {
      check_back(parameters, Utils::GETParameters(*request));
    }
  }
}

void check_user(const std::string& user, const std::string& password) {
  const auto request = Utils::POSTRequestWithURL(nullptr, {});
  Utils::setHTTPBasicAuthUser(*request, user, password);
  if (user.find(':') == std::string::npos && password.find(':') == std::string::npos) {
    require(Utils::HTTPBasicAuthUser(*request) == user);
    require(Utils::HTTPBasicAuthPassword(*request) == password);
  }
}

template <typename Check>
void raising_is_fine(const Check& check) {
  try {
    check();
  } catch (const quoll::foundation::NSException& exception) {
    require(!exception.name().empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Script script({data, size});
  const Dictionary parameters = parameters_of(script);
  const std::string user = quoll::foundation::utf8_with_escapes(script.text(12));
  const std::string password = quoll::foundation::utf8_with_escapes(script.text(12));
  const auto url = NSURL::URLWithString(script.rest());
  raising_is_fine([&] { check_body(url, parameters); });
  raising_is_fine([&] { check_query(url, parameters); });
  raising_is_fine([&] { check_user(user, password); });
  return 0;
}
