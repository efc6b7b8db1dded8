#include "quoll/requestutils/url_components.h"

#include <iostream>

#include "examples/reference/examples.h"

void examples::url_components() {
  using namespace quoll::RequestUtils;
  using quoll::foundation::NSURL;
  const auto url = NSURL::URLWithString("http://u@h:8/p?x=1");
  std::cout << components(*url).objectForKey("port").description() << '\n';  // 8
  std::cout << URLWithFragment(*url, "f")->absoluteString() << '\n';         // http://u@h:8/p?x=1#f
  std::cout << URLWithScheme(*url, "https")->absoluteString() << '\n';       // https://u@h:8/p?x=1
  const auto made = URLWithComponents({{"scheme", "http"}, {"host", "h"}, {"path", "/p"}});
  std::cout << made->absoluteString() << '\n';  // http://h/p
}
