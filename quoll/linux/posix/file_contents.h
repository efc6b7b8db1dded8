#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>

#include "quoll/linux/posix/system_call.h"

/// What a file holds and what is kept with it, by descriptors.
namespace quoll::posix {

/// Called after each piece of a copy with the bytes of it, at most 16 MiB. False ends the copy with
/// ECANCELED.
using CopyStep = std::function<bool(std::uint64_t bytes)>;

/// Copies the contents of a regular file into a new, empty one, sharing blocks where the file
/// system can and leaving holes where the source has holes. A source that grows meanwhile is copied
/// up to the size it had; one that shrinks, up to where it ends. One that claims no size (as files
/// of /proc do) is read to its end; with more than 64 MiB it counts as having none, and is refused.
/// `step` may be null. Where blocks are shared there are no pieces.
[[nodiscard]] Outcome copy_contents(int from, int to, const CopyStep& step = nullptr);

/// Gives `to` the permissions, times (to the nanosecond) and user extended attributes of `from`,
/// whose status is `status`. What a file system cannot keep is left out. Set-user and set-group
/// bits are not kept: the copy belongs to whoever made it.
void keep_attributes(int from, const struct stat& status, int to);

/// The error that a network file system tells only when a file is closed; 0 when all is well. The
/// descriptor stays open.
[[nodiscard]] int late_write_error(int fd);

}  // namespace quoll::posix
