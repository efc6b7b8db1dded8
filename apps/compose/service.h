#pragma once

#include <chrono>
#include <string>

namespace quoll::compose {

/// Answers to `identifier` on the session bus as `org.freedesktop.Application` until nothing came
/// for `idle`, and answers the exit status: 0, or 1 when there is no bus or another program has the
/// name (said on standard error).
///
/// `Open` answers when the drafts were taken: their files are the receiver's then, and the sender
/// may remove its own. It answers an error, and takes none, when one of them cannot be taken.
[[nodiscard]] int serve(const std::string& identifier, std::chrono::milliseconds idle);

}  // namespace quoll::compose
