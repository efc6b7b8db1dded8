#pragma once

#include <memory>

#include "quoll/platform/files.h"
#include "quoll/platform/log.h"

namespace quoll::share {

/// A log that tells the witness of the writing thread of each line, and standard error too when
/// `aloud` is set.
[[nodiscard]] std::shared_ptr<platform::Log> watched_log(std::shared_ptr<platform::Log> log,
                                                         bool aloud);

/// A file system that tells the witness of the calling thread where each file was put.
[[nodiscard]] std::shared_ptr<platform::NSFileManager> watched_files(
    std::shared_ptr<platform::NSFileManager> files);

}  // namespace quoll::share
