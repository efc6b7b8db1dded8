#pragma once

#include <memory>

#include "quoll/platform/log.h"

namespace quoll::share {

/// A log that shows each line on standard error too.
[[nodiscard]] std::shared_ptr<platform::Log> make_echoing_log(std::shared_ptr<platform::Log> log);

}  // namespace quoll::share
