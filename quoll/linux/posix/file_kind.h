#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace quoll::posix {

/// What something is that is not a regular file, in words that follow a colon: "it is a folder".
/// None for a regular file. `mode` is that of `stat`.
[[nodiscard]] std::optional<std::string> other_kind(mode_t mode);

}  // namespace quoll::posix
