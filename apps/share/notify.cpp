#include "apps/share/notify.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "apps/share/report.h"
#include "apps/share/request/received_bytes.h"
#include "quoll/linux/gio/notification.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

namespace {

constexpr int kSignalled = 128;

int wait_for(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

void show(int code, std::string_view told) {
  constexpr std::size_t kMost = 1000;  // a notification has no room for more
  constexpr std::chrono::milliseconds kTimeOut{5000};
  const std::string shown = shown_report(told, kMost).value_or("");
  const bool is_opened = code == static_cast<int>(ExitCode::kSomethingLeftOut);
  gio::show_notification(is_opened ? "Not everything is in the draft" : "Nothing was shared",
                         shown.empty() ? "The system log tells more." : shown, kTimeOut);
}

}  // namespace

int share_and_notify(const std::function<int()>& share) {
  int ends[2] = {-1, -1};
  const bool is_piped = pipe2(ends, O_CLOEXEC) == 0;
  posix::UniqueFd reading(ends[0]);
  posix::UniqueFd writing(ends[1]);
  const pid_t program = getpid();
  const pid_t process = is_piped ? fork() : -1;
  if (process < 0) {
    return share();  // as it would be without a desktop
  }
  if (process == 0) {
    // Whoever ends this program ends the share.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != program) {
      _exit(kSignalled + SIGKILL);
    }
    dup2(writing.get(), STDERR_FILENO);
    writing.reset();
    reading.reset();
    std::exit(share());
  }
  writing.reset();
  constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
  const std::string told = receive_text(reading.get(), kAll).value_or("");
  static_cast<void>(posix::write_all(STDERR_FILENO, told));
  const int code = wait_for(process);
  if (code != 0) {
    show(code, told);
  }
  return code;
}

}  // namespace quoll::share
