#include "quoll/foundation/property_list.h"

#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/foundation/collections.h"

void examples::property_lists() {
  using namespace quoll::foundation;
  const auto root = read_property_list(std::string_view("({ mail = \"a@h\"; })"));
  std::cout << root->as<List>().objectAtIndex(0).objectForKey("mail").description() << '\n';  // a@h
  PropertyListFault fault;
  if (!read_property_list("(\n  { mail = a }\n)", fault)) {
    std::cout << fault.line << ':' << fault.column << ": " << fault.reason
              << '\n';  // 2:14: ";" was expected
  }
}
