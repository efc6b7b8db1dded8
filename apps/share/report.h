#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "apps/share/request/select.h"
#include "apps/share/run.h"
#include "quoll/platform/log.h"

namespace quoll::share {

/// What a program that shares ends with.
enum class ExitCode : int {
  kOpened = 0,
  kNotOpened = 1,
  kUsage = 2,
  kSomethingLeftOut = 3,
};

/// Tells people what came of the share, whose events are given: a line for each thing that was left
/// out, one when the shared folder could not be prepared, one when nothing was opened. A share that
/// arrived whole is silent.
[[nodiscard]] ExitCode report(const Selection& selection,
                              const std::vector<recording::Event>& events, std::ostream& out);

/// What was logged, in words for people: of an error only what the system said at the bottom of it
/// ("permission denied"). One line, ready for a terminal.
[[nodiscard]] std::string plain_reason(const platform::LogEvent& event);

/// What another process told as `report` does, to be shown: as many whole lines as `most` bytes
/// hold, and "..." for the rest. That process has had other people's bytes in its hands, so none
/// when it is not text.
[[nodiscard]] std::optional<std::string> shown_report(std::string_view told, std::size_t most);

}  // namespace quoll::share
