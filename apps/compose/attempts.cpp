#include "apps/compose/attempts.h"

#include <sstream>

#include "apps/compose/small_file.h"
#include "quoll/foundation/printable.h"

namespace quoll::compose {
namespace {

constexpr const char* kFile = "attempts";
constexpr const char* kBegun = "begun\n";
constexpr std::string_view kFailed = "failed ";

}  // namespace

Attempts::Attempts(int folder) : folder_(folder) {
  std::istringstream lines(read_small_file(folder, kFile));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(kFailed)) {
      failures_.push_back(line.substr(kFailed.size()));
    }
  }
}

int Attempts::begin() {
  return write(kBegun);
}

void Attempts::ended() {
  static_cast<void>(write(""));  // a line too many counts nothing
}

void Attempts::failed(const std::string& reason) {
  failures_.push_back(foundation::printable(reason));
  static_cast<void>(write(""));  // what is not noted is tried once more
}

bool Attempts::are_enough() const {
  constexpr std::size_t kMost = 3;
  return failures_.size() >= kMost;
}

std::string Attempts::reason() const {
  return failures_.empty() ? "" : failures_.back();
}

int Attempts::write(const char* last_line) const {
  std::string content;
  for (const std::string& reason : failures_) {
    content += std::string(kFailed) + reason + "\n";
  }
  return write_small_file(folder_, kFile, content + last_line);
}

}  // namespace quoll::compose
