#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "quoll/linux/image_helper/images.h"

namespace quoll::image_helper {

std::string helper_path() {
  namespace fs = std::filesystem;
  if (const char* const named = secure_getenv("QUOLL_IMAGE_HELPER");
      named != nullptr && *named != '\0') {
    return named;
  }
  std::error_code ignored;
  const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  const fs::path installed = (folder / QUOLL_IMAGE_HELPER_FROM_PROGRAMS).lexically_normal();
  const fs::path built = (folder / "../../apps/image-helper/quoll-image-helper").lexically_normal();
  return !fs::exists(installed, ignored) && fs::exists(built, ignored) ? built : installed;
}

}  // namespace quoll::image_helper
