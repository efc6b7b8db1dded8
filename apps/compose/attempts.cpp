#include "apps/compose/attempts.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <string_view>

#include "apps/compose/compose_error.h"
#include "apps/compose/small_file.h"
#include "quoll/foundation/printable.h"

namespace quoll::compose {
namespace {

constexpr const char* kAttemptsFile = "attempts";
constexpr std::string_view kBegun = "begun";
constexpr std::string_view kFailed = "failed ";
constexpr std::size_t kMostWithoutEnd = 5;

}  // namespace

Attempts::Attempts(int folder) : folder_(folder) {
  std::string notes;
  if (const int error = read_small_file(folder, kAttemptsFile, notes);
      error != 0 && error != ENOENT) {
    throw ComposeError(std::string("its attempts cannot be read: ") + std::strerror(error));
  }
  std::istringstream lines(notes);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(kFailed)) {
      failures_.push_back(line.substr(kFailed.size()));
    } else if (line == kBegun) {
      ++without_end_;
    }
  }
}

int Attempts::begin() {
  ++without_end_;
  return write();
}

void Attempts::ended() {
  without_end_ = 0;
  if (failures_.empty()) {
    unlinkat(folder_, kAttemptsFile, 0);  // a line too many counts nothing
  } else {
    static_cast<void>(write());
  }
}

void Attempts::failed(const std::string& reason) {
  without_end_ = 0;
  failures_.push_back(foundation::printable(reason));
  static_cast<void>(write());  // what is not noted is tried once more
}

bool Attempts::are_enough() const {
  constexpr std::size_t kMostFailures = 3;
  return failures_.size() >= kMostFailures || without_end_ >= kMostWithoutEnd;
}

bool Attempts::are_suspicious() const {
  constexpr std::size_t kMany = 3;
  return without_end_ >= kMany;
}

std::string Attempts::reason() const {
  if (without_end_ >= kMostWithoutEnd) {
    return "the program ended while it was written, five times";
  }
  return failures_.empty() ? "" : failures_.back();
}

int Attempts::write() const {
  std::string content;
  for (const std::string& reason : failures_) {
    content += std::string(kFailed) + reason + "\n";
  }
  for (std::size_t i = 0; i < without_end_; ++i) {
    content += std::string(kBegun) + "\n";
  }
  return write_small_file(folder_, kAttemptsFile, content);
}

}  // namespace quoll::compose
