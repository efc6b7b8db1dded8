#pragma once

#include <functional>
#include <optional>
#include <string>

#include "quoll/linux/posix/lock_holder.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// Keeps other shares away from the staging folder, as an open lock file. Each share empties the
/// folder, so none may begin before the one before it has handed its files over. The lock is held
/// until this object goes or the process ends in whatever way. Empty when the lock is not held.
using StagingLock = posix::UniqueFd;

/// What the line that tells of a wait begins with.
inline constexpr const char* kWaiting = "waiting for another share";

/// Gets that line, ended as one.
using TellOfWaiting = std::function<void(const std::string& line)>;

/// Who holds the lock now; none when that is not known, and when there is nobody to tell: no `tell`
/// and no terminal. A confined process cannot tell.
[[nodiscard]] std::optional<posix::LockHolder> staging_lock_holder(
    const TellOfWaiting& tell = nullptr);

/// Waits for the lock, however long it takes, or until an `Interruption` comes. It tells so once,
/// with the holder that was found before: at once of one that was stopped, else after 10 seconds,
/// or to a person at a terminal, without `tell`, after one. Answers an empty lock without a
/// container, and when the lock file cannot be opened; the share goes on then.
[[nodiscard]] StagingLock lock_staging(const std::optional<posix::LockHolder>& holder = {},
                                       const TellOfWaiting& tell = nullptr);

}  // namespace quoll::share
