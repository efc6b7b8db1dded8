#pragma once

#include <string>

namespace quoll::compose {

/// Writes a small file into an open folder, in place of what is there; only this user can read it.
/// Whatever goes wrong, it is there as it was or as it shall be. Answers 0 or an `errno` value.
[[nodiscard]] int write_small_file(int folder, const char* name, const std::string& content);

/// Reads what a small file in an open folder holds, at most the first 16 MiB. Answers 0 or an
/// `errno` value: `ENOENT` when there is none.
[[nodiscard]] int read_small_file(int folder, const char* name, std::string& content);

}  // namespace quoll::compose
