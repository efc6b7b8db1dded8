#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "apps/share/exit_code.h"
#include "apps/share/request/selection.h"
#include "quoll/platform/log.h"
#include "quoll/recording/event.h"

namespace quoll::share {

/// Tells people what came of the share, whose events are given: a line for each thing that was left
/// out, one when the shared folder could not be prepared, one when nothing was opened. A share that
/// arrived whole is silent.
[[nodiscard]] ExitCode report(const Selection& selection,
                              const std::vector<recording::Event>& events, std::ostream& out);

/// What was logged, in words for people: of an error only what the system said at the bottom of it
/// ("permission denied"). One line, ready for a terminal.
[[nodiscard]] std::string plain_reason(const platform::LogEvent& event);

}  // namespace quoll::share
