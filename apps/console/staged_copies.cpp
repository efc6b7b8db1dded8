#include "apps/console/staged_copies.h"

#include <filesystem>

#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/linux/posix/group_containers.h"

namespace quoll::console {

namespace fs = std::filesystem;

StagedCopies staged_copies() {
  const auto containers = posix::group_containers_folder();
  if (!containers) {
    return {};
  }
  const fs::path folder = fs::path(*containers) / ExtensionUtilities::application_group /
                          ExtensionUtilities::GroupFolderName() / container::layout::staging;
  StagedCopies copies{.folder = folder, .files = 0, .bytes = 0};
  std::error_code error;
  for (fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                              error);
       !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code gone;
    if (!entry->is_directory(gone)) {
      ++copies.files;
      const auto size = entry->is_regular_file(gone) ? entry->file_size(gone) : 0;
      copies.bytes += gone ? 0 : size;
    }
  }
  return copies;
}

std::string in_words(const StagedCopies& copies) {
  constexpr std::uintmax_t kKibibyte = 1024;
  return std::to_string(copies.files) + (copies.files == 1 ? " file (" : " files (") +
         std::to_string((copies.bytes + kKibibyte - 1) / kKibibyte) + " KiB)";
}

}  // namespace quoll::console
