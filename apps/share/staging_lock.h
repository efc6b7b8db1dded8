#pragma once

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// The open lock file that keeps other shares away from the staging folder: each share empties it,
/// so none may begin before the one before it has handed its files over. Held until this object
/// goes or the process ends, however that comes about; empty when it is not held.
using StagingLock = posix::UniqueFd;

/// Waits for the lock, as long as it takes; a person at a terminal is told after a second. Without
/// a container there is nothing to lock, and when the lock cannot be had (a container that cannot
/// be written) the share goes on as well.
[[nodiscard]] StagingLock lock_staging();

}  // namespace quoll::share
