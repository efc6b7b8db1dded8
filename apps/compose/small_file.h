#pragma once

#include <string>

namespace quoll::compose {

/// Writes a small file into an open folder, in place of what is there; only this user can read it.
/// Answers 0 or an `errno` value.
[[nodiscard]] int write_small_file(int folder, const char* name, const std::string& content);

/// What a small file in an open folder holds, at most the first 16 MiB; empty when it cannot be
/// read.
[[nodiscard]] std::string read_small_file(int folder, const char* name);

}  // namespace quoll::compose
