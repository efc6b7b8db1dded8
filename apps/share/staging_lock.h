#pragma once

#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// Keeps other shares away from the staging folder, as an open lock file. Each share empties the
/// folder, so none may begin before the one before it has handed its files over. The lock is held
/// until this object goes or the process ends in whatever way. Empty when the lock is not held.
using StagingLock = posix::UniqueFd;

/// Who holds the lock now, "quoll-share, process 7"; empty when that is not known, and when nobody
/// at a terminal waits. A confined process cannot tell.
[[nodiscard]] std::string staging_lock_holder();

/// Waits for the lock, however long it takes; a person at a terminal is told after a second, with
/// the holder that was found before. Answers an empty lock without a container, and when the lock
/// file cannot be opened; the share goes on then.
[[nodiscard]] StagingLock lock_staging(const std::string& holder = "");

}  // namespace quoll::share
