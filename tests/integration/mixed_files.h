#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "quoll/foundation/path.h"
#include "tests/integration/share_home.h"

namespace quoll::test {

/// A number that whoever runs the tests may give by a variable, to look for longer.
inline int number_from(const char* variable, int usual) {
  const char* const given = std::getenv(variable);
  return given != nullptr ? std::atoi(given) : usual;
}

/// How often files are shared to see that they arrive in order.
inline int order_trials() {
  return number_from("QUOLL_TEST_ORDER_TRIALS", 10);
}

/// Twenty files, small ones beside large ones: whoever copies several at a time gets them out of
/// order. They are named against the order of the alphabet, and picked in the order of the answer.
inline std::vector<std::string> write_mixed_files(const std::string& folder) {
  const std::size_t sizes[] = {std::size_t{3} << 20, 10, std::size_t{200} << 10, 4096};
  std::vector<std::string> paths;
  for (int number = 20; number > 0; --number) {
    const std::string path = folder + "/" + std::to_string(number) + ".bin";
    std::ofstream(path, std::ios::binary) << std::string(sizes[number % 4], 'x');
    paths.push_back(path);
  }
  return paths;
}

/// The names of files, without their folders.
inline std::vector<std::string> names_of(const std::vector<std::string>& paths) {
  std::vector<std::string> names;
  for (const std::string& path : paths) {
    names.emplace_back(foundation::last_path_component(path));
  }
  return names;
}

/// The names of the attachments of the command that a receiver double has written down.
inline std::vector<std::string> recorded_names(const std::string& record) {
  return names_of(attachments_of(read_file(record).substr(std::string("uri ").size())));
}

}  // namespace quoll::test
