#pragma once

#include <string_view>

#include "quoll/foundation/format.h"

namespace quoll::platform {

/// The system log: one free-form line an event, without levels. Any thread may write.
class Log {
 public:
  Log() = default;
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;
  virtual ~Log() = default;

  /// Writes one line. The text may hold line breaks and control characters; an adapter that writes
  /// lines turns them into escapes.
  virtual void line(std::string_view text) = 0;
};

/// Writes `text` to the installed log. The only place from which the system logs.
void log_line(std::string_view text);

/// The same with a pattern: `log("shareInit %@", error)`.
template <typename First, typename... Rest>
void log(std::string_view pattern, const First& first, const Rest&... rest) {
  log_line(foundation::format(pattern, first, rest...));
}

}  // namespace quoll::platform
