#pragma once

#include <string>
#include <vector>

#include "apps/console/finding.h"

namespace quoll::console {

/// Whether a share could put files into the group container: tries to, and makes what the first
/// share makes. With `repair` it first closes the container to other users and removes what killed
/// shares left in it. The desktop with the share's bundle must be installed.
[[nodiscard]] std::vector<Finding> check_container(bool repair);

/// The folder in which `quoll-compose` keeps drafts.
[[nodiscard]] std::string drafts_place();

}  // namespace quoll::console
