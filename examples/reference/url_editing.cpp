#include "quoll/requestutils/url_editing.h"

#include <iostream>

#include "examples/reference/examples.h"

void examples::url_editing() {
  using namespace quoll::RequestUtils;
  std::cout << stringByAppendingURLQuery("http://h/p#f", "b=2") << '\n';  // http://h/p?b=2#f
  std::cout << stringByMergingURLQuery("a=1", "b=2") << '\n';             // a=1&b=2
  std::cout << lastURLPathComponent("http://h/dir/a.txt?x=1") << '\n';    // a.txt
  std::cout << URLPathExtension("http://h/dir/a.txt?x=1") << '\n';        // txt
  std::cout << stringByAppendingURLPathComponent("http://h/a?x=1", "b")
            << '\n';                                        // http://h/a/b?x=1
  std::cout << stringByDeletingURLFragment("a#b") << '\n';  // a
}
