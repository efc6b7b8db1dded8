#pragma once

#include "quoll/platform/desktop.h"

namespace quoll::console {

/// What surrounds this program. It starts the launcher's process unless the environment asks for
/// recording, so it comes before everything else that the program does.
[[nodiscard]] platform::Desktop program_desktop();

/// What surrounds a command that only reads what is shared and tells people: it starts nothing, and
/// what the library logs goes to standard error.
[[nodiscard]] platform::Desktop reading_desktop();

}  // namespace quoll::console
