#pragma once

namespace quoll::sandbox {

/// Limits this process and what it starts (the image helper) to the system calls that copy files
/// and make images. Answers 0 or an `errno` value.
[[nodiscard]] int enforce_share_calls();

}  // namespace quoll::sandbox
