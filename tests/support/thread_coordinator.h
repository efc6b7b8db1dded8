#pragma once

#include <functional>
#include <memory>

#include "quoll/platform/coordinator.h"

namespace quoll::test {

/// Coordinators that keep apart the threads of this process by the paths alone, wherever they lie:
/// nothing has to exist. All that come from one factory know of each other.
[[nodiscard]] std::function<std::unique_ptr<platform::NSFileCoordinator>()> thread_coordinators();

}  // namespace quoll::test
