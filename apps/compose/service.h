#pragma once

#include <chrono>
#include <string>

namespace quoll::compose {

/// Answers calls to `identifier` on the session bus, as `org.freedesktop.Application`, until none
/// has come for `idle`. Answers the exit status: 0, or 1 when there is no bus or another program
/// has the name, which is said on standard error.
///
/// `Open` is answered when the drafts were taken. From then on the receiver has its own files, and
/// the sender may remove its own. If one of the drafts cannot be taken, none is, and `Open` answers
/// an error.
[[nodiscard]] int serve(const std::string& identifier, std::chrono::milliseconds idle);

}  // namespace quoll::compose
