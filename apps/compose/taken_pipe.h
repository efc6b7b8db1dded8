#pragma once

#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

/// The pipe that a sender has given this program in QUOLL_TAKEN_PIPE, to be told when its commands
/// were taken; none when there is none. The variable is removed, and nobody else inherits the pipe.
/// Call it first of all.
[[nodiscard]] posix::UniqueFd inherited_pipe();

/// Tells the sender that its commands were taken, by the end of the pipe. Before the end stands
/// what was left out, when anything was, as `report_of` has it; an empty line in front says that a
/// command was refused.
void report_taken(posix::UniqueFd pipe, bool is_refused, const std::string& report);

}  // namespace quoll::compose
