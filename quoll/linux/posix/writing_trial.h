#pragma once

#include <string>

namespace quoll::posix {

/// Tries whether files can be kept in a folder: writes some into a file without a name, which is
/// gone when this returns. Answers 0, or the `errno` value that says why not.
[[nodiscard]] int try_writing(const std::string& folder);

}  // namespace quoll::posix
