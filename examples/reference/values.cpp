#include "quoll/foundation/value.h"

#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"

void examples::values() {
  using namespace quoll::foundation;
  const Dictionary dictionary{{"mail", "a@h"}, {"rank", "12 or so"}, {"list", List{1, 2.5, true}}};
  const Value rank = dictionary.objectForKey("rank");
  std::cout << (rank.integer() == nullptr) << ' ' << rank.integerValue() << '\n';  // 1 12
  for (const auto& element : dictionary.objectForKey("list").as<List>()) {
    std::cout << element.description() << ' ';
  }
  std::cout << '\n';  // 1 2.5 1
  try {
    static_cast<void>(dictionary.objectForKey("list").integerValue());
  } catch (const NSException& exception) {
    std::cout << exception.name() << '\n';  // NSInvalidArgumentException
  }
}
