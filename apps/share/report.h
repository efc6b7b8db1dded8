#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "apps/share/exit_code.h"
#include "apps/share/request/selection.h"
#include "quoll/platform/log.h"
#include "quoll/recording/event.h"

namespace quoll::share {

/// Writes what came of a share to `out`, for people: a line for each thing that was left out, one
/// when the shared folder could not be prepared, and one when nothing was opened; nothing for a
/// share that arrived whole. `events` are those of the share, without those of its items.
[[nodiscard]] ExitCode report(const Selection& selection,
                              const std::vector<recording::Event>& events, std::ostream& out);

/// An event of the log in words for people: of its error only the innermost cause ("permission
/// denied"), without an error the event's text. One line, ready for a terminal.
[[nodiscard]] std::string plain_reason(const platform::LogEvent& event);

}  // namespace quoll::share
