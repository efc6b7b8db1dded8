// An image helper that does anything at all, for tests. The image that it gets is a script of what
// to do, see `helper_steps.h`; `helper_answers.cpp` knows the expected outcome.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>

#include "fuzz/helper_steps.h"

int main() {
  using quoll::fuzz::HelperStep;
  unsigned char script[1024];
  const ssize_t length = read(STDIN_FILENO, script, sizeof script);
  char bytes[256];
  for (std::size_t i = 0; i < sizeof bytes; ++i) {
    bytes[i] = static_cast<char>(i);
  }
  for (ssize_t at = 0; at + 1 < length; at += 2) {
    const unsigned char value = script[at + 1];
    // A failure here is ignored: the other side must cope.
    ssize_t ignored = 0;
    switch (quoll::fuzz::helper_step(script[at])) {
      case HelperStep::kWrite:
        ignored = write(STDOUT_FILENO, bytes, value);
        break;
      case HelperStep::kWriteFarAway:
        ignored = pwrite(STDOUT_FILENO, "x", 1, (off_t{1} << 30U) + value);
        break;
      case HelperStep::kResize:
        ignored = ftruncate(STDOUT_FILENO, static_cast<off_t>(value) * 4);
        break;
      case HelperStep::kSeal:
        ignored = fcntl(
            STDOUT_FILENO, F_ADD_SEALS,
            value % 2 == 0 ? F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE : value % 16);
        break;
      case HelperStep::kSay:
        ignored = write(STDERR_FILENO, bytes, value);
        break;
      case HelperStep::kChangeTheImage:
        ignored = pwrite(STDIN_FILENO, bytes, value, 0) + ftruncate(STDIN_FILENO, value);
        break;
      case HelperStep::kEnd:
        _exit(value);
      case HelperStep::kDie:
        kill(getpid(), value % 2 == 0 ? SIGSEGV : SIGKILL);
        break;
    }
    static_cast<void>(ignored);
  }
  return 0;
}
