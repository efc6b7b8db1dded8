#include "quoll/requestutils/http_request.h"

#include <iostream>

#include "examples/reference/examples.h"

void examples::http_request() {
  using namespace quoll::RequestUtils;
  using quoll::foundation::NSURL;
  const auto url = NSURL::URLWithString("http://h/p?x=1");
  const auto get = GETRequestWithURL(url, {{"a", "1"}});
  std::cout << get->URL()->absoluteString() << '\n';  // http://h/p?x=1&a=1
  const auto post = POSTRequestWithURL(url, {{"a", "1"}});
  setHTTPBasicAuthUser(*post, "u", "p");
  std::cout << post->valueForHTTPHeaderField("content-length").value() << '\n';  // 3
  std::cout << HTTPBasicAuthUser(*post).value() << '\n';                         // u
  std::cout << POSTParameters(*post).objectForKey("a").description() << '\n';    // 1
}
