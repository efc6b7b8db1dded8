#include "apps/console/output.h"

#include <iostream>

#include "quoll/foundation/printable.h"

namespace quoll::console {

int complain(const std::string& why) {
  std::cerr << "quollctl: " << foundation::printable(why) << '\n';
  return 1;
}

void print_json(const Json& json) {
  std::cout << json_line(json) << '\n';
}

void print_line(std::string_view label, std::size_t column, std::string_view text) {
  std::cout << label << std::string(label.size() < column ? column - label.size() : 1, ' ')
            << foundation::printable(text) << '\n';
}

int finish(bool all_went_well) {
  return std::cout.flush() && all_went_well ? 0 : 1;
}

}  // namespace quoll::console
