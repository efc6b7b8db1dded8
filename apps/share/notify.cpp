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
#include "apps/share/staging_lock.h"
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

void show(const Notice& notice) {
  constexpr std::chrono::milliseconds kTimeOut{5000};
  gio::show_notification(kIdentifier, notice.title, notice.body, kTimeOut);
}

/// Reads to the end and passes it on. A line that tells of waiting is shown and is no result.
std::string read_result(int pipe) {
  std::string told;
  bool has_ended = false;
  const auto read = [&](std::size_t enough) {
    return !has_ended && posix::read_until(pipe, told, enough, has_ended);
  };
  while (told.find('\n') == std::string::npos && read(told.size() + 1)) {
  }
  if (told.starts_with(kWaiting) && told.ends_with('\n')) {
    write_to(STDERR_FILENO, told);
    told.pop_back();
    show(notice_of_waiting(told));
    told.clear();
  }
  static_cast<void>(read(std::numeric_limits<std::size_t>::max()));
  write_to(STDERR_FILENO, told);
  return told;
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
  const std::string told = read_result(pipe.reading.get());
  const int code = wait_for(process);
  if (code != 0) {
    show(notice_of(code, told));
  }
  return code;
}

}  // namespace quoll::share
