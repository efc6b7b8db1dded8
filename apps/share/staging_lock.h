#pragma once

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// Keeps other shares away from the staging folder, as an open lock file. Each share empties the
/// folder, so none may begin before the one before it has handed its files over. The lock is held
/// until this object goes or the process ends in whatever way. Empty when the lock is not held.
using StagingLock = posix::UniqueFd;

/// Waits for the lock, however long it takes; a person at a terminal is told after a second.
/// Answers an empty lock without a container, and when the lock file cannot be opened; the share
/// goes on then.
[[nodiscard]] StagingLock lock_staging();

}  // namespace quoll::share
