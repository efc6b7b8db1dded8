// Loaded before the C library, it lets the copy of a file wait: QUOLL_SLOW says for how many
// seconds, once in each process, before the first bytes are copied. A signal ends the wait.
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void wait_once() {
  static bool has_waited = false;
  const char* const seconds = std::getenv("QUOLL_SLOW");
  if (seconds != nullptr && !has_waited) {
    has_waited = true;
    sleep(static_cast<unsigned>(std::atoi(seconds)));
  }
}

}  // namespace

extern "C" ssize_t copy_file_range(int from, off64_t* in, int to, off64_t* out, size_t size,
                                   unsigned flags) {
  wait_once();
  return syscall(SYS_copy_file_range, from, in, to, out, size, flags);
}
