#include "apps/compose/taken_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

std::vector<TakenFile> taken_files(int folder) {
  std::vector<TakenFile> files;
  for (;;) {
    const std::string place = "files/" + std::to_string(files.size());
    const posix::UniqueFd one(
        openat(folder, place.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    std::vector<std::string> names;
    if (!one || posix::list_folder(one.get(), names) != 0 || names.empty()) {
      return files;
    }
    files.push_back({.name = names.front(), .path = place + "/" + names.front()});
  }
}

std::uint64_t message_size(int folder) {
  const auto size_of = [&](const std::string& path) -> std::uint64_t {
    struct stat status {};
    return fstatat(folder, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
               ? static_cast<std::uint64_t>(status.st_size)
               : 0;
  };
  // A text is at most escaped once more than it is in the command, and HTML has its plain text too.
  std::uint64_t size = 4096 + 2 * size_of("command");
  for (const TakenFile& file : taken_files(folder)) {
    // In Base64 57 bytes become a line of 76, with a line end of two bytes.
    size += size_of(file.path) / 57 * 78 + 1024;
  }
  return size;
}

}  // namespace quoll::compose
