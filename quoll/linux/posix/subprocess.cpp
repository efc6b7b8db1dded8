#include "quoll/linux/posix/subprocess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

namespace {

constexpr std::size_t kLongestComplaint = 200;

/// Answers the process, which leads a group of its own, or -1.
pid_t spawn(const std::vector<std::string>& command, int output, int errors) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  pid_t process = -1;
  const int failed =
      posix_spawnp(&process, arguments[0], &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return failed == 0 ? process : -1;
}

bool ended_well(pid_t process) {
  int status = -1;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string first_line(int errors) {
  std::string text(kLongestComplaint, '\0');
  const ssize_t size = pread(errors, text.data(), text.size(), 0);
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return foundation::printable(text.substr(0, text.find('\n')), kLongestComplaint);
}

}  // namespace

ToolAnswer run_tool(const std::vector<std::string>& command, std::size_t most,
                    std::chrono::milliseconds patience,
                    std::chrono::steady_clock::time_point deadline) {
  ToolAnswer answer;
  int ends[2] = {-1, -1};
  const UniqueFd errors(memfd_create("errors", MFD_CLOEXEC));
  if (pipe2(ends, O_CLOEXEC) != 0) {
    answer.end = ToolAnswer::End::kBadly;
    answer.complaint = error_words(errno);
    return answer;
  }
  const UniqueFd reading(ends[0]);
  UniqueFd writing(ends[1]);
  const pid_t process = spawn(command, writing.get(), errors.get());
  writing.reset();
  if (process < 0) {
    return answer;
  }
  bool ended = false;
  const bool is_read =
      read_until(reading.get(), answer.output, most + 1, ended, patience, deadline);
  if (!ended) {
    kill(-process, SIGKILL);  // one of its children may be the one that waits
  }
  const bool is_well = ended_well(process);
  answer.complaint = first_line(errors.get());
  if (!is_read) {
    answer.end = ToolAnswer::End::kSilent;
  } else if (!ended) {
    answer.end = ToolAnswer::End::kTooLong;
  } else {
    answer.end = is_well ? ToolAnswer::End::kWell : ToolAnswer::End::kBadly;
  }
  return answer;
}

}  // namespace quoll::posix
