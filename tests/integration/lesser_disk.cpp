// Loaded before the C library, it lets the disk lack what QUOLL_LACKS names, as the file systems of
// networks do: exclusive renames ("rename"), syncing of folders ("sync"), locks of folders
// ("lock"); with "disk of files" or "disk of folders" nothing of these reaches it; "close PART"
// lets the closing of files fail whose path has this part.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string lack() {
  const char* const value = std::getenv("QUOLL_LACKS");
  return value != nullptr ? value : "";
}

bool is_folder(int file) {
  struct stat status {};
  return fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
}

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool is_lost_at_close(int file) {
  const std::string lacks = lack();
  char path[4096] = {};
  return lacks.starts_with("close ") &&
         readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path - 1) > 0 &&
         std::strstr(path, lacks.c_str() + 6) != nullptr;
}

}  // namespace

extern "C" int renameat2(int from, const char* name, int to, const char* other,
                         unsigned flags) noexcept {
  if (flags != 0 && lack() == "rename") {
    errno = EINVAL;
    return -1;
  }
  return next<decltype(&renameat2)>("renameat2")(from, name, to, other, flags);
}

extern "C" int fsync(int file) {
  if (lack() == "sync" && is_folder(file)) {
    errno = EINVAL;
    return -1;
  }
  if (lack() == (is_folder(file) ? "disk of folders" : "disk of files")) {
    errno = EIO;
    return -1;
  }
  return next<decltype(&fsync)>("fsync")(file);
}

extern "C" int flock(int file, int operation) noexcept {
  if (lack() == "lock" && is_folder(file)) {
    errno = ENOLCK;
    return -1;
  }
  return next<int (*)(int, int)>("flock")(file, operation);
}

extern "C" int close(int file) {
  const bool is_lost = is_lost_at_close(file);
  const int result = next<decltype(&close)>("close")(file);
  if (is_lost) {
    errno = EIO;
    return -1;
  }
  return result;
}
