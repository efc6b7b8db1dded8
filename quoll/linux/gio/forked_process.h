#pragma once

#include <sys/types.h>

#include <functional>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::gio {

/// A process that is this program too, but not confined as it will be, and the socket to it. -1 and
/// none when it could not be started. Whoever has it closes the socket and reaps it.
struct ForkedProcess {
  pid_t id = -1;
  posix::UniqueFd socket;
};

/// Starts one, which runs `serve` with its end of the socket and ends when that returns. It gives
/// up the terminal, pipes and files of the program, so that nobody who waits for the end of one of
/// them waits for it. Standard error is kept for messages of libraries. To be called while there is
/// one thread, and before this process uses GIO.
[[nodiscard]] ForkedProcess fork_process(const std::function<void(int socket)>& serve);

}  // namespace quoll::gio
