#pragma once

#include <string>
#include <string_view>

namespace quoll::share {

/// A log line in words for people: without the name of the operation, and of an error only what the
/// system said at the bottom of it ("permission denied"). One line, ready for a terminal.
[[nodiscard]] std::string plain_reason(std::string_view log_line);

/// The code of the outermost error in a log line; 0 when the line holds none.
[[nodiscard]] int error_code(std::string_view log_line);

}  // namespace quoll::share
