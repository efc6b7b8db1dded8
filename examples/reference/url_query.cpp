#include "quoll/requestutils/url_query.h"

#include <iostream>

#include "examples/reference/examples.h"

void examples::url_query() {
  using namespace quoll::RequestUtils;
  using quoll::foundation::Dictionary;
  using quoll::foundation::List;
  std::cout << URLEncodedString("a b&c") << '\n';                 // a%20b%26c
  std::cout << URLDecodedString("a+b%21", true).value() << '\n';  // a b!
  std::cout << URLQuery("http://h/p?x=1#f").value() << '\n';      // x=1
  const Dictionary parameters{{"a", List{"1", "2"}}, {"b", "x y"}};
  std::cout << URLQueryWithParameters(parameters) << '\n';  // a=1&a=2&b=x%20y
  std::cout << URLQueryWithParameters(parameters, URLQueryKeepLastValue) << '\n';  // a=2&b=x%20y
  std::cout << URLQueryParameters("a=1&a=2").objectForKey("a").description() << '\n';  // 2
  const auto range = rangeOfURLQuery("h?a#f").value();
  std::cout << range.location << ' ' << range.length << '\n';  // 1 2
}
