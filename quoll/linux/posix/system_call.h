#pragma once

#include <cerrno>
#include <optional>
#include <string>

namespace quoll::posix {

/// Why a file operation stopped.
struct FileFailure {
  /// An `errno` value.
  int number = 0;
  /// False when it was the source that could not be read.
  bool writing = true;
  /// A sentence that says more than the number; may be empty.
  std::string text = {};
};

/// None is success.
using Outcome = std::optional<FileFailure>;

/// Makes a system call again for as long as a signal interrupts it.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

}  // namespace quoll::posix
