#include "quoll/linux/posix/file_kind.h"

#include <sys/stat.h>

namespace quoll::posix {

std::optional<std::string> other_kind(mode_t mode) {
  switch (mode & static_cast<mode_t>(S_IFMT)) {
    case S_IFREG:
      return std::nullopt;
    case S_IFDIR:
      return "it is a folder";
    case S_IFLNK:
      return "it is a symbolic link";
    case S_IFIFO:
      return "it is a pipe";
    case S_IFSOCK:
      return "it is a socket";
    default:
      return "it is a device";
  }
}

}  // namespace quoll::posix
