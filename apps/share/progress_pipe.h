#pragma once

#include <string_view>

#include "apps/share/run.h"

namespace quoll::share {

/// A pipe between a share and whoever started it. The share writes a line "DONE STEPS" whenever
/// something has moved on. The first half of the steps is the preparation, with the wait for the
/// turn: until a line tells of more, the reader ends the share by closing its end, as SIGTERM would
/// (`Interruption`).

/// Writes the lines to this end of the pipe, and drops them when nobody reads.
[[nodiscard]] Progress progress_to(int pipe);

/// True when the last whole one of these lines tells that the second half has begun.
[[nodiscard]] bool has_turn(std::string_view lines);

}  // namespace quoll::share
