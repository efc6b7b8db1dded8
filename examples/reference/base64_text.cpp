#include "quoll/requestutils/base64_text.h"

#include <iostream>

#include "examples/reference/examples.h"

void examples::base64_text() {
  using namespace quoll::RequestUtils;
  std::cout << base64EncodedString("u:p").value() << '\n';    // dTpw
  std::cout << base64DecodedString("dT pw").value() << '\n';  // u:p
  std::cout << base64EncodedString("").has_value() << '\n';   // 0
}
