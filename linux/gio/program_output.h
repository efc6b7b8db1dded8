#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quoll::gio {

/// What a program writes to standard output: `argv` is started as a terminal would, with nothing on
/// standard input, and its complaints are dropped. None when it cannot be started or does not end
/// with 0. Waits for its end, so it has to be one that ends. For a program's main thread.
[[nodiscard]] std::optional<std::string> output_of(const std::vector<std::string>& argv);

}  // namespace quoll::gio
