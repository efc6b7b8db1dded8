#include "quoll/platform/files.h"

#include "quoll/foundation/path.h"

namespace quoll::platform {

std::shared_ptr<foundation::NSURL> fileURLWithPath(std::string_view path) {
  if (path.empty()) {
    return nullptr;
  }
  const auto manager = NSFileManager::defaultManager();
  std::string absolute(path);
  if (!path.starts_with('/')) {
    absolute = foundation::appending_path_component(manager->currentDirectoryPath(), path);
    if (!absolute.starts_with('/')) {
      absolute.insert(0, 1, '/');
    }
  }
  return foundation::NSURL::file_url(absolute, manager->isDirectoryAtPath(absolute));
}

}  // namespace quoll::platform
