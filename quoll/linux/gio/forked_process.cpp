#include "quoll/linux/gio/forked_process.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::gio {

namespace {

constexpr unsigned kFirstOther =
    STDERR_FILENO + 1;  // the first descriptor after standard input, output and error

void detach_from_program(int socket) {
  setsid();  // Ctrl-C in the terminal must end neither this process nor what it starts
  for (const int number : {SIGCHLD, SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGHUP}) {
    std::signal(number, SIG_DFL);
  }
  const int nothing = open("/dev/null", O_RDWR);
  for (const int number : {STDIN_FILENO, STDOUT_FILENO}) {
    dup2(nothing, number);
  }
  const auto keep = static_cast<unsigned>(socket);
  if (keep > kFirstOther) {
    close_range(kFirstOther, keep - 1, 0);
  }
  close_range(keep + 1, ~0U, 0);
}

}  // namespace

ForkedProcess fork_process(const std::function<void(int socket)>& serve) {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    return {};
  }
  posix::UniqueFd own_end = posix::above_standard_streams(posix::UniqueFd(ends[0]));
  const posix::UniqueFd its_end = posix::above_standard_streams(posix::UniqueFd(ends[1]));
  if (!own_end || !its_end) {
    return {};
  }
  const pid_t process = fork();
  if (process == 0) {
    own_end.reset();
    detach_from_program(its_end.get());
    serve(its_end.get());
    _exit(0);  // without the exit handlers, which are the program's
  }
  return {process, std::move(own_end)};
}

}  // namespace quoll::gio
