// Loaded into a program before its own libraries: the probe is made at a point where the program
// has confined itself, in the program as it was built.
#include <dlfcn.h>
#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "tests/sandbox/probes.h"

namespace {

bool runs_in(std::string_view program) {
  const char* const wanted = std::getenv("QUOLL_PROBE_IN");
  return wanted != nullptr && program == wanted && program == program_invocation_short_name;
}

}  // namespace

/// The first thing that `quoll-share` does after it has confined itself is to lock the folder of
/// what it prepares, or to wait for its turn.
extern "C" int flock(int descriptor, int operation) {
  if (runs_in("quoll-share")) {
    quoll::test::probe_and_end();
  }
  return static_cast<int>(syscall(SYS_flock, descriptor, operation));
}

/// The first thing that `quoll-share-browser` does after it has confined itself is to read what the
/// browser says; nothing of it is read before.
extern "C" ssize_t read(int descriptor, void* bytes, size_t size) {
  if (descriptor == STDIN_FILENO && runs_in("quoll-share-browser")) {
    quoll::test::probe_and_end();
  }
  return syscall(SYS_read, descriptor, bytes, size);
}

/// It closes its standard error, on which the probe reports.
extern "C" int dup2(int descriptor, int other) {
  if (other == STDERR_FILENO && runs_in("quoll-share-browser")) {
    return other;
  }
  return static_cast<int>(syscall(SYS_dup2, descriptor, other));
}

/// The image helper writes when it has read the beginning of the image, the folder helper when it
/// begins its file.
extern "C" ssize_t write(int descriptor, const void* bytes, size_t size) {
  if (runs_in("quoll-image-helper") || runs_in("quoll-folder-helper")) {
    quoll::test::probe_and_end();
  }
  return syscall(SYS_write, descriptor, bytes, size);
}
