#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/platform/log.h"

namespace quoll::posix {

/// The system log of this machine, with `program` and the process number before each line. It
/// connects when it is made, so that it works in a confined program. One program makes one.
[[nodiscard]] std::shared_ptr<platform::Log> make_system_log(std::string program);

/// A text as one line: control characters (line breaks among them) as `\n`, `\r`, `\t` or the
/// escape of their bytes, `\x1b`; Unicode's line and paragraph separators and bytes that are not
/// UTF-8 likewise escaped; at most 4096 bytes, "…" standing for what is left out.
[[nodiscard]] std::string one_line(std::string_view text);

}  // namespace quoll::posix
