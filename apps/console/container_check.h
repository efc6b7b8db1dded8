#pragma once

#include <string>
#include <vector>

#include "apps/console/finding.h"

namespace quoll::console {

/// What was repaired, and what could not be.
struct Repairs {
  std::vector<std::string> done, failed;
};

/// Whether a share could put files into the group container: tries to, and makes what the first
/// share makes. With `repairs` it first closes the container to other users and removes what killed
/// shares left in it, and notes that there; null to repair nothing. The desktop with the share's
/// bundle must be installed.
[[nodiscard]] std::vector<Finding> check_container(Repairs* repairs);

/// The folder in which `quoll-compose` keeps drafts.
[[nodiscard]] std::string drafts_place();

}  // namespace quoll::console
