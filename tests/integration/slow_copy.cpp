// Loaded before the C library, it makes programs wait, and lets the copy of a file fail.
//
//   QUOLL_SLOW=SECONDS    once in each process, before the first bytes of a file are copied
//   QUOLL_SLOW_PIECE=MS   before each piece of a copy
//   QUOLL_SLOW_HELPER=SECONDS  before the image helper begins
//   QUOLL_COPY_ERROR=ERRNO     what reading says after the first piece of a file, of 4096 bytes
//
// A signal ends a wait.
#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

int number_in(const char* variable) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::atoi(text) : 0;
}

void wait_once() {
  static bool has_waited = false;
  if (const int seconds = number_in("QUOLL_SLOW"); seconds > 0 && !has_waited) {
    has_waited = true;
    sleep(static_cast<unsigned>(seconds));
  }
}

__attribute__((constructor)) void begin() {
  if (std::strcmp(program_invocation_short_name, "quoll-image-helper") == 0) {
    sleep(static_cast<unsigned>(number_in("QUOLL_SLOW_HELPER")));
  }
}

/// The error of whatever is read behind the first piece.
bool fails_at(off64_t position) {
  const int error = number_in("QUOLL_COPY_ERROR");
  errno = position > 0 && error != 0 ? error : errno;
  return position > 0 && error != 0;
}

}  // namespace

extern "C" ssize_t copy_file_range(int from, off64_t* in, int to, off64_t* out, size_t size,
                                   unsigned flags) {
  constexpr size_t kPiece = 4096;
  wait_once();
  usleep(static_cast<useconds_t>(number_in("QUOLL_SLOW_PIECE")) * 1000);
  if (in != nullptr && fails_at(*in)) {
    return -1;
  }
  const size_t piece = number_in("QUOLL_COPY_ERROR") != 0 ? std::min(size, kPiece) : size;
  return syscall(SYS_copy_file_range, from, in, to, out, piece, flags);
}

extern "C" ssize_t pread64(int file, void* bytes, size_t size, off64_t position) {
  return fails_at(position) ? -1 : syscall(SYS_pread64, file, bytes, size, position);
}

extern "C" ssize_t pread(int file, void* bytes, size_t size, off_t position) {
  return pread64(file, bytes, size, position);
}
