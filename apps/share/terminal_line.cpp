#include "apps/share/terminal_line.h"

#include <unistd.h>

#include <utility>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

void TerminalLine::show(const std::string& words) {
  if (Clock::now() - begin_ >= std::chrono::seconds(1) && isatty(STDERR_FILENO) == 1) {
    is_shown_ = true;
    static_cast<void>(posix::write_all(STDERR_FILENO, "\r" + words + "\033[K"));
  }
}

void TerminalLine::clear() {
  if (std::exchange(is_shown_, false)) {
    static_cast<void>(posix::write_all(STDERR_FILENO, "\r\033[K"));
  }
}

}  // namespace quoll::share
