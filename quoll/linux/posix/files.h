#pragma once

#include <memory>

#include "quoll/platform/files.h"

namespace quoll::posix {

/// The files of this machine. It keeps no state; any thread may call.
///
/// A failed copy names the source under "NSFilePath" and the destination under
/// "NSDestinationFilePath". `contentsAtPath` refuses files above 1 GiB.
[[nodiscard]] std::shared_ptr<platform::NSFileManager> make_file_manager();

}  // namespace quoll::posix
