#pragma once

#include <cstddef>
#include <string>

namespace quoll::posix {

/// The bytes that a small draft needs; with less room nothing is taken.
inline constexpr std::size_t kSmallDraft = std::size_t{64} * 1024;

/// Tries whether a small draft can be kept in a folder: writes as much into a file without a name,
/// which is gone when this returns. Answers 0, or the `errno` value that says why not.
[[nodiscard]] int try_writing(const std::string& folder);

}  // namespace quoll::posix
