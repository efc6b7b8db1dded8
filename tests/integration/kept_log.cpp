// Loaded into a program: what it tells the system log goes to the file QUOLL_KEPT_LOG instead.
#include <fcntl.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

int file = -1;

void keep(const char* format, va_list arguments) {
  vdprintf(file, format, arguments);
  dprintf(file, "\n");
}

}  // namespace

// The C library's, replaced; under the second name programs call it whose buffers are guarded. The
// file is opened at once, because the program may confine itself later.
extern "C" {

void openlog(const char* /*program*/, int /*options*/, int /*facility*/) {
  const char* const path = std::getenv("QUOLL_KEPT_LOG");
  file = path == nullptr ? -1 : open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
}
void syslog(int /*priority*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keep(format, arguments);
  va_end(arguments);
}
void __syslog_chk(int /*priority*/, int /*guard*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keep(format, arguments);
  va_end(arguments);
}

}  // extern "C"
