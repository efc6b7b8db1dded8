#pragma once

#include <vector>

#include "apps/console/finding.h"

namespace quoll::console {

/// Whether the browsers that are installed here find the program that our extension asks for, and
/// whether they may start it at all. The extension itself is not looked for: each profile may have
/// it from elsewhere.
[[nodiscard]] std::vector<Finding> check_browsers();

}  // namespace quoll::console
