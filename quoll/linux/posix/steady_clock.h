#pragma once

#include <memory>

#include "quoll/platform/clock.h"

namespace quoll::posix {

/// Time as it passes while the machine is awake, whatever is done to the date. A signal does not
/// end a sleep; zero, a negative number and NaN do not sleep.
[[nodiscard]] std::shared_ptr<platform::Clock> make_clock();

}  // namespace quoll::posix
