#pragma once

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// A share's turn with the group container: each share empties the staging folder, so none may
/// begin before the one before it has handed its files over. Held until this object goes or the
/// process ends, however that comes about.
class Turn {
 public:
  explicit Turn(posix::UniqueFd lock = posix::UniqueFd()) : lock_(std::move(lock)) {}
  [[nodiscard]] bool is_held() const { return static_cast<bool>(lock_); }

 private:
  posix::UniqueFd lock_;
};

/// Waits for the turn, as long as it takes; a person at a terminal is told after a second. Without
/// a container there is nothing to take turns for, and when the lock cannot be had (a container
/// that cannot be written) the share goes on as well.
[[nodiscard]] Turn take_turn();

}  // namespace quoll::share
