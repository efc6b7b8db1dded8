#include "quoll/foundation/exchange_date.h"

#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/foundation/calendar.h"

void examples::dates() {
  using namespace quoll::foundation;
  const auto date = date_of_exchange_text("1970-01-02T00:00:00Z");
  std::cout << date->seconds_since_1970 << '\n';                         // 86400
  std::cout << date_of_exchange_text("1970-01-02").has_value() << '\n';  // 0
  std::cout << seconds_from_civil(1970, 1, 1, 0, 1, 0).value() << '\n';  // 60
}
