#pragma once

#include <cstdlib>
#include <map>
#include <string>

namespace quoll::test {

/// The variables that say what the user's dates look like, as long as it lives; those that are not
/// given are not there.
class DateEnvironment {
 public:
  explicit DateEnvironment(const std::map<std::string, std::string>& variables) {
    clear();
    for (const auto& [name, value] : variables) {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  DateEnvironment(const DateEnvironment&) = delete;
  DateEnvironment& operator=(const DateEnvironment&) = delete;
  ~DateEnvironment() { clear(); }

 private:
  static void clear() {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG", "TZ"}) {
      unsetenv(name);
    }
  }
};

}  // namespace quoll::test
