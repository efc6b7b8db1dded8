#include "quoll/linux/posix/exclusive_rename.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace quoll::posix {

int rename_exclusively(int from_folder, const std::string& from, int to_folder,
                       const std::string& to) {
  int result = ::renameat2(from_folder, from.c_str(), to_folder, to.c_str(), RENAME_NOREPLACE);
  if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
    struct stat status {};
    if (::fstatat(to_folder, to.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
      return EEXIST;
    }
    result = ::renameat(from_folder, from.c_str(), to_folder, to.c_str());
  }
  if (result != 0) {
    return errno == ENOTEMPTY ? EEXIST : errno;  // a folder came there meanwhile
  }
  return 0;
}

}  // namespace quoll::posix
