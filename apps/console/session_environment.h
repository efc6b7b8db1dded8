#pragma once

#include "apps/console/finding.h"

namespace quoll::console {

/// Compares the environment that a running mail application was started with, by its process
/// identifier, with that of this program. What differs can keep the two from meeting in one
/// container, or windows from being shown.
[[nodiscard]] Finding compare_environment(int process);

/// Whether `quoll-compose` knows of a display to start a mail client on. `process` is the one that
/// the bus has started, or this one when the desktop entry starts it from here.
[[nodiscard]] Finding check_display(int process);

}  // namespace quoll::console
