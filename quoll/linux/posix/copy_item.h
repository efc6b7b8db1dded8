#pragma once

#include <string>

#include "quoll/linux/posix/file_contents.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::posix {

/// Copies a file, or a folder with all that is in it, to a name that is not taken. The name appears
/// when the copy is whole, not before; after a failure or a kill there is nothing under it.
/// `source` may be a link to either; links inside a folder stay links. Pipes, sockets and devices
/// are refused and never waited for. Both are usable paths (`is_usable_path`). `step` follows the
/// copy of a file; it may be null.
[[nodiscard]] Outcome copy_item(const std::string& source, const std::string& destination,
                                const CopyStep& step = nullptr);

}  // namespace quoll::posix
