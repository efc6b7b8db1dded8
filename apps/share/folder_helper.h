#pragma once

#include <cstdlib>
#include <string>

#include "quoll/linux/posix/installed_file.h"

namespace quoll::share {

/// The path of the helper that packs folders; nobody looks whether it is there. To be called before
/// the process confines itself.
[[nodiscard]] inline std::string folder_helper_path() {
  const char* const named = ::secure_getenv("QUOLL_FOLDER_HELPER");
  return named != nullptr && *named != '\0'
             ? named
             : posix::installed_file(posix::InstalledFolder::kHelpers, "quoll-folder-helper");
}

}  // namespace quoll::share
