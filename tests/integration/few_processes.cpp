// Loaded before the C library, it leaves a program and its children as many forks as the variable
// FORKS says.
#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

extern "C" pid_t fork() noexcept {
  static int left = std::atoi(std::getenv("FORKS"));
  if (left-- <= 0) {
    errno = EAGAIN;
    return -1;
  }
  return reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"))();
}
