#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace quoll::posix {

/// Who holds a `flock` lock on a file, for people who wonder why something waits.
struct LockHolder {
  int process = 0;         ///< 0 when the system does not tell
  std::string program{};   ///< its name; empty when the system does not tell
  bool is_shared = false;  ///< others can hold such a lock beside it
  bool is_stopped = false;
  std::time_t began = 0;  ///< when the process was started; 0 when the system does not tell
};

/// The holder of an exclusive lock on the file, or one of those of a shared lock; none when it is
/// free, or there is no such file. Takes the lock for a moment to see whether it is free.
[[nodiscard]] std::optional<LockHolder> lock_holder(const std::string& path);

}  // namespace quoll::posix
