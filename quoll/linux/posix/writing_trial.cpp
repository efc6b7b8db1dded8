#include "quoll/linux/posix/writing_trial.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::posix {

int try_writing(const std::string& folder) {
  const UniqueFd file = open_file(folder, O_TMPFILE | O_WRONLY, 0600);
  if (file) {
    return write_all(file.get(), std::string(kSmallDraft, '\0')) ? 0 : errno;
  }
  if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) {
    return errno;
  }
  // This file system knows no files without a name.
  return ::access(folder.c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

}  // namespace quoll::posix
