#pragma once

#include <memory>

#include "quoll/platform/files.h"

namespace quoll::posix {

/// The files of this machine. It keeps no state; any thread may call.
///
/// A failed copy names, in its sentence and under "NSFilePath", the path that is at fault: the
/// source when it could not be read, the destination when that could not be written. The other one
/// stands under "NSDestinationFilePath" or "NSSourceFilePathErrorKey". `contentsAtPath` refuses
/// files above 1 GiB.
[[nodiscard]] std::shared_ptr<platform::NSFileManager> make_file_manager();

}  // namespace quoll::posix
