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

#include "apps/share/notice.h"
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
    constexpr std::chrono::milliseconds kTimeOut{5000};
    const Notice notice = notice_of(code, told);
    gio::show_notification(notice.title, notice.body, kTimeOut);
  }
  return code;
}

}  // namespace quoll::share
