#pragma once

#include <string>

namespace quoll::posix {

/// Removes the entry `name` of an open folder: a file, a link (never followed), or a folder with
/// all that is in it, however deep. Goes on after a failure. Answers 0 or the `errno` value of the
/// first failure.
[[nodiscard]] int remove_item(int parent, const std::string& name);

}  // namespace quoll::posix
