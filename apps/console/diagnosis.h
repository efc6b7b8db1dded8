#pragma once

#include <vector>

#include "apps/console/finding.h"

namespace quoll::console {

/// Tries everything that a share needs, in the order of its way from the program to the compose
/// window, without sharing anything. It makes what the first share would make of the container, and
/// has `quoll-compose` answer; a mail application is looked up and not started. With `repair` it
/// first repairs what it can: it makes the container and sets its mode, removes from it what killed
/// shares left, and chooses the application that opens command URLs when none does; the step
/// "repairs" tells what it did and what it could not.
[[nodiscard]] std::vector<Finding> diagnose(bool repair);

/// True when a share would arrive, whole.
[[nodiscard]] bool share_would_arrive(const std::vector<Finding>& findings);

}  // namespace quoll::console
