#pragma once

#include "quoll/platform/desktop.h"

namespace quoll::console {

/// The desktop of `quollctl call` and of commands that open something. It starts the launcher's
/// process, unless the environment asks to record only; so call it before everything else in the
/// program.
[[nodiscard]] platform::Desktop program_desktop();

/// The desktop of commands that only read and print. It starts nothing, and writes the library's
/// log to standard error.
[[nodiscard]] platform::Desktop reading_desktop();

}  // namespace quoll::console
