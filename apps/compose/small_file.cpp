#include "apps/compose/small_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_contents.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {
namespace {

int write_new_file(int folder, const std::string& name, const std::string& content) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
  const posix::UniqueFd file(openat(folder, name.c_str(), kFlags, S_IRUSR | S_IWUSR));
  return file && posix::write_all(file.get(), content) ? posix::late_write_error(file.get())
                                                       : errno;
}

}  // namespace

int write_small_file(int folder, const char* name, const std::string& content) {
  const std::string beside = std::string(".") + name;
  int error = write_new_file(folder, beside, content);
  if (error == 0 && renameat(folder, beside.c_str(), folder, name) != 0) {
    error = errno;
  }
  if (error != 0) {
    unlinkat(folder, beside.c_str(), 0);
  }
  return error;
}

int read_small_file(int folder, const char* name, std::string& content) {
  constexpr std::size_t kEnough = std::size_t{16} << 20U;
  const posix::UniqueFd file(openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  bool ended = false;
  content.clear();
  return file && posix::read_until(file.get(), content, kEnough, ended) ? 0 : errno;
}

}  // namespace quoll::compose
