#pragma once

namespace quoll::sandbox {

/// Leaves this process and what it starts (the image helper) only the system calls with which files
/// are copied and images are made. Answers 0 or an `errno` value.
[[nodiscard]] int enforce_share_calls();

}  // namespace quoll::sandbox
