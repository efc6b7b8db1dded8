#pragma once

#include <chrono>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// Where bytes come from, and the limits for reading them.
struct ByteSource {
  int descriptor = -1;
  /// How long it may deliver nothing; no limit when none.
  std::optional<std::chrono::milliseconds> read_timeout = std::nullopt;
  /// How many bytes it may deliver; more is an error.
  std::size_t limit = std::numeric_limits<std::size_t>::max();
};

/// A memory file with these bytes, to which more can be written; none with `errno` set.
[[nodiscard]] posix::UniqueFd make_image_file(std::string_view bytes);

/// The beginning of what a descriptor delivers, or all of it.
struct ReceivedBytes {
  std::string beginning;
  /// All that was read of an image, in a memory file; none of other bytes.
  posix::UniqueFd image;
  std::size_t size = 0;
  bool is_whole = false;
};

/// Reads enough to tell what the bytes are. An image is read whole, up to 256 MiB and up to the
/// limit, and only one block of it is held outside of its file. None, with `errno` set, when
/// reading failed.
[[nodiscard]] std::optional<ReceivedBytes> read_beginning(const ByteSource& source);

/// Writes the beginning, and then what still comes from `source`, to the descriptor `target`. Holds
/// one block in memory. Answers the number of bytes; none, with `errno` set, when it failed
/// (EOVERFLOW: more bytes than the limit).
[[nodiscard]] std::optional<std::size_t> write_received(const ReceivedBytes& received,
                                                        const ByteSource& source, int target);

/// All that a descriptor delivers, or its first `most` bytes; none, with `errno` set, when
/// reading failed.
[[nodiscard]] std::optional<std::string> read_at_most(int descriptor, std::size_t most);

}  // namespace quoll::share
