#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quoll::host {

/// The beginning of what a descriptor delivers, or all of it.
struct ReceivedBytes {
  std::string beginning;
  bool is_whole = false;
};

/// Reads enough to tell what it is, and all of it when it is an image that memory may hold; none
/// with `errno` set when reading failed.
[[nodiscard]] std::optional<ReceivedBytes> receive(int descriptor);

/// Writes the beginning and whatever still comes from `source` to `target`, without holding more
/// than a block in memory. False with `errno` set.
[[nodiscard]] bool write_through(const ReceivedBytes& received, int source, int target);

/// All that a descriptor delivers, or its first `enough` bytes; none with `errno` set.
[[nodiscard]] std::optional<std::string> receive_text(int descriptor, std::size_t enough);

}  // namespace quoll::host
