#include "quoll/linux/image_helper/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>

namespace quoll::image_helper {

namespace {

using Clock = std::chrono::steady_clock;

struct SpawnActions {
  posix_spawn_file_actions_t value;
  SpawnActions() { posix_spawn_file_actions_init(&value); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() { posix_spawn_file_actions_destroy(&value); }
};

/// No signal blocked or ignored, whatever the calling program does with its own.
struct SpawnAttributes {
  posix_spawnattr_t value;
  SpawnAttributes() {
    posix_spawnattr_init(&value);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&value, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&value, &signals);
    posix_spawnattr_setflags(&value, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() { posix_spawnattr_destroy(&value); }
};

/// Starts the program; 0 and the process, or an `errno` value. It gets these three descriptors
/// and no others, whatever this program has open.
int start(const std::string& program, const char* argument,
          std::initializer_list<int> standard_streams, pid_t& process) {
  SpawnActions actions;
  int number = 0;
  for (const int stream : standard_streams) {
    posix_spawn_file_actions_adddup2(&actions.value, stream, number++);
  }
  posix_spawn_file_actions_addclosefrom_np(&actions.value, number);
  const SpawnAttributes attributes;
  char* const arguments[] = {const_cast<char*>(program.c_str()), const_cast<char*>(argument),
                             nullptr};
  return posix_spawn(&process, program.c_str(), &actions.value, &attributes.value, arguments,
                     environ);
}

/// 0 when the process has ended, ETIMEDOUT when it takes longer, or the `errno` value that says why
/// it cannot be watched.
int wait_for_end(const Descriptor& process, std::chrono::milliseconds time_limit) {
  const auto deadline = Clock::now() + time_limit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd ended{process.get(), POLLIN, 0};
    const int ready = poll(&ended, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready > 0) {
      return 0;
    }
    if (ready == 0) {
      return ETIMEDOUT;
    }
    if (errno != EINTR) {
      return errno;
    }
  }
}

/// The first line that the helper left in the pipe.
std::string read_reason(const Descriptor& pipe) {
  char text[512];
  const ssize_t length = read(pipe.get(), text, sizeof text);
  std::string reason(text, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  return reason.substr(0, reason.find('\n'));
}

std::string describe(int status) {
  if (WIFSIGNALED(status)) {
    return "the helper was killed by signal " + std::to_string(WTERMSIG(status));
  }
  return "the helper ended with status " + std::to_string(WEXITSTATUS(status));
}

std::string system_reason(const char* what, int number) {
  return std::string(what) + ": " + std::strerror(number);
}

}  // namespace

Outcome run_helper(const std::string& program, const char* argument, int in, int out,
                   std::chrono::milliseconds time_limit) {
  auto [reading, writing] = make_pipe();
  if (!reading.good() || !writing.good()) {
    return {false, system_reason("no pipe to the helper", errno)};
  }
  pid_t process = -1;
  if (const int error = start(program, argument, {in, out, writing.get()}, process); error != 0) {
    return {false, system_reason(("the helper " + program + " cannot be started").c_str(), error)};
  }
  writing = Descriptor();
  const Descriptor watched(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  const int trouble = watched.good() ? wait_for_end(watched, time_limit) : errno;
  if (trouble != 0) {
    kill(process, SIGKILL);
  }
  int status = 0;
  pid_t waited = -1;
  do {
    waited = waitpid(process, &status, 0);
  } while (waited < 0 && errno == EINTR);
  if (trouble != 0) {
    return {false, trouble == ETIMEDOUT ? "the helper took too long"
                                        : system_reason("the helper cannot be watched", trouble)};
  }
  // A program that ignores its children's ends is told no status. The seal on the result decides.
  if (waited < 0 || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) {
    return {true, {}};
  }
  const std::string reason = read_reason(reading);
  return {false, reason.empty() ? describe(status) : reason};
}

}  // namespace quoll::image_helper
