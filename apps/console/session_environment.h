#pragma once

#include "apps/console/finding.h"

namespace quoll::console {

/// Compares the environment that the session bus gave to a program that it started, by the process
/// identifier, with that of this program. What differs can keep the two from meeting in one
/// container, or windows from being shown.
[[nodiscard]] Finding compare_environment(int process);

}  // namespace quoll::console
