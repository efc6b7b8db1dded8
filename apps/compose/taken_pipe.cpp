#include "apps/compose/taken_pipe.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::compose {

posix::UniqueFd inherited_pipe() {
  constexpr const char* kVariable = "QUOLL_TAKEN_PIPE";
  const char* const value = std::getenv(kVariable);
  const std::string_view text = value != nullptr ? value : "";
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_number = error == std::errc() && end == text.data() + text.size();
  unsetenv(kVariable);
  struct stat status {};
  if (!is_number || number <= STDERR_FILENO || fstat(number, &status) != 0 ||
      !S_ISFIFO(status.st_mode)) {
    return posix::UniqueFd();
  }
  fcntl(number, F_SETFD, FD_CLOEXEC);
  return posix::UniqueFd(number);
}

void report_taken(posix::UniqueFd pipe, bool is_refused, const std::string& report) {
  const std::string text = (is_refused ? "\n" : "") + report;
  if (!pipe || text.empty()) {
    return;
  }
  fcntl(pipe.get(), F_SETFL, O_NONBLOCK);  // a sender that does not read holds up nobody
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  static_cast<void>(posix::write_all(pipe.get(), text));
  std::signal(SIGPIPE, before);
}

}  // namespace quoll::compose
