#pragma once

#include <string>
#include <vector>

#include "apps/console/finding.h"

namespace quoll::console {

/// Whether the mail application would take a share: the session bus, and the application by its
/// identifier. When that is `quoll-compose`, it is had answer, within the time that it has in a
/// share; its display, its drafts and the mail client are looked at too. Any other application is
/// looked up and never started, since it would show a window. Of one that runs the environment is
/// compared.
[[nodiscard]] std::vector<Finding> check_receiver(const std::string& application);

}  // namespace quoll::console
