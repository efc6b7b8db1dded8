#include "apps/compose/attempts.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>

#include "apps/compose/compose_error.h"
#include "apps/compose/small_file.h"
#include "quoll/foundation/printable.h"

namespace quoll::compose {
namespace {

constexpr const char* kFile = "attempts";
constexpr const char* kBegun = "begun\n";
constexpr std::string_view kFailed = "failed ";

}  // namespace

Attempts::Attempts(int folder) : folder_(folder) {
  std::string notes;
  if (const int error = read_small_file(folder, kFile, notes); error != 0 && error != ENOENT) {
    throw ComposeError(std::string("its attempts cannot be read: ") + std::strerror(error));
  }
  std::istringstream lines(notes);
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
  if (failures_.empty()) {
    unlinkat(folder_, kFile, 0);  // a line too many counts nothing
  } else {
    static_cast<void>(write(""));
  }
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
