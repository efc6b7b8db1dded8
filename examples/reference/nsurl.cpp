#include "quoll/foundation/nsurl.h"

#include <iostream>

#include "examples/reference/examples.h"

void examples::nsurl() {
  using quoll::foundation::NSURL;
  const auto base = NSURL::URLWithString("http://a/b/c?q");
  const auto url = NSURL::URLWithString("../d%20e;x#f", base);
  std::cout << url->absoluteString() << '\n';           // http://a/d%20e;x#f
  std::cout << url->path().value() << '\n';             // /d e
  std::cout << url->parameterString().value() << '\n';  // x
  std::cout << url->query().has_value() << '\n';        // 0
  const auto file = NSURL::file_url("/tmp/a b", false);
  std::cout << file->absoluteString() << '\n';                    // file:///tmp/a%20b
  std::cout << file_system_path(file).value() << '\n';            // /tmp/a b
  std::cout << (NSURL::URLWithString("a b") == nullptr) << '\n';  // 1
}
