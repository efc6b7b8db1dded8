#pragma once

#include <string>

namespace quoll::posix {

/// Gives an entry another name in one step, unless that name is taken: then it answers `EEXIST`.
/// Answers 0 or another `errno` value when it cannot. Network file systems know no exclusive
/// rename; there only a folder that is not empty, and the name of one, are sure to stay when two
/// programs do this at the same time.
[[nodiscard]] int rename_exclusively(int from_folder, const std::string& from, int to_folder,
                                     const std::string& to);

}  // namespace quoll::posix
