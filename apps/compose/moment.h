#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace quoll::compose {

/// A moment, by the clock that can be set and by the one that cannot.
struct Moment {
  std::int64_t time = 0;        ///< seconds since 1970
  std::string boot;             ///< identifies the start of the system
  std::int64_t since_boot = 0;  ///< in seconds, including sleep
};
[[nodiscard]] Moment present_moment();

/// A line that stands for a moment in a file, with a line end.
[[nodiscard]] std::string mark_of(const Moment& moment);

/// How many seconds ago the line was written, into a file with this status. While the system runs,
/// setting the clock changes nothing; after a restart, or without such a line, the file's time
/// counts. Negative when that is in the future.
[[nodiscard]] std::int64_t age_of(const std::string& mark, const struct stat& status,
                                  const Moment& now);

/// What stands before the first line end, and what stands behind it.
[[nodiscard]] std::string first_line(const std::string& text);
[[nodiscard]] std::string after_first_line(const std::string& text);

}  // namespace quoll::compose
