#include "apps/compose/small_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

int write_small_file(int folder, const char* name, const std::string& content) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
  const posix::UniqueFd file(openat(folder, name, kFlags, S_IRUSR | S_IWUSR));
  return file && posix::write_all(file.get(), content) ? 0 : errno;
}

std::string read_small_file(int folder, const char* name) {
  constexpr std::size_t kEnough = std::size_t{16} << 20U;
  const posix::UniqueFd file(openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  std::string content;
  bool ended = false;
  return file && posix::read_until(file.get(), content, kEnough, ended) ? content : "";
}

}  // namespace quoll::compose
