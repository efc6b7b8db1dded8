#pragma once

#include <memory>
#include <string>

#include "quoll/platform/log.h"

namespace quoll::posix {

/// The system log of this machine, with `program` and the process number before each line. It
/// connects when it is made, so that it works in a confined program. An event is one line of at
/// most 4096 bytes, with what would break it as escapes. One program makes one.
[[nodiscard]] std::shared_ptr<platform::Log> make_system_log(std::string program);

}  // namespace quoll::posix
