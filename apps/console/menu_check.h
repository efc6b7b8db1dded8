#pragma once

#include <vector>

#include "apps/console/finding.h"

namespace quoll::console {

/// Whether the menus of the programs that are installed here have the share's entry, and whether
/// other programs can call it.
[[nodiscard]] std::vector<Finding> check_menus();

}  // namespace quoll::console
