#include "apps/share/notify.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string>

#include "apps/share/identifier.h"
#include "apps/share/notice.h"
#include "apps/share/request/received_bytes.h"
#include "quoll/linux/gio/notification.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::share {

namespace {

constexpr int kSignalled = 128;

int wait_for(pid_t process) {
  const int status = posix::reap(process).value_or(0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

void write_to(int descriptor, const std::string& told) {
  static_cast<void>(posix::write_all(descriptor, told));
}

}  // namespace

int share_and_notify(const std::function<int(const Tell& tell)>& share) {
  posix::Pipe pipe = posix::make_pipe();
  const pid_t program = getpid();
  const pid_t process = pipe ? fork() : -1;
  if (process < 0) {
    // Then nothing is shown on the desktop.
    return share([](const std::string& told) { write_to(STDERR_FILENO, told); });
  }
  if (process == 0) {
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != program) {
      _exit(kSignalled + SIGKILL);
    }
    pipe.reading.reset();
    std::exit(share([&](const std::string& told) { write_to(pipe.writing.get(), told); }));
  }
  pipe.writing.reset();
  constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
  const std::string told = read_at_most(pipe.reading.get(), kAll).value_or("");
  write_to(STDERR_FILENO, told);
  const int code = wait_for(process);
  if (code != 0) {
    constexpr std::chrono::milliseconds kTimeOut{5000};
    const Notice notice = notice_of(code, told);
    gio::show_notification(kIdentifier, notice.title, notice.body, kTimeOut);
  }
  return code;
}

}  // namespace quoll::share
