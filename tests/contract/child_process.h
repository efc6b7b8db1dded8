#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <functional>
#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::test {

/// Runs `body` in a child process of its own and answers what it returned, or how the child ended
/// instead. Bodies return what is wrong, and nothing when all is well.
inline std::string in_child_process(const std::function<std::string()>& body) {
  int ends[2];
  if (::pipe(ends) != 0) {
    return "no pipe";
  }
  const posix::UniqueFd in(ends[0]);
  posix::UniqueFd out(ends[1]);
  const pid_t child = ::fork();
  if (child == 0) {
    std::string text;
    try {
      text = body();
    } catch (const std::exception& exception) {
      text = exception.what();
    }
    // Shorter than a pipe holds, so it is written whole.
    const bool written = ::write(out.get(), text.data(), text.size()) >= 0;
    ::_exit(written ? 0 : 1);
  }
  out.reset();
  std::string answer;
  char buffer[512];
  for (ssize_t got = 1; got > 0;) {
    got = ::read(in.get(), buffer, sizeof buffer);
    answer.append(buffer, got > 0 ? static_cast<std::size_t>(got) : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    answer += "; ended with status " + std::to_string(status);
  }
  return answer;
}

/// Gives up the rights of root, for what root is allowed and nobody else. True when this process
/// has no such rights now.
inline bool become_nobody() {
  constexpr uid_t kNobody = 65534;
  return ::geteuid() != 0 || (::setresgid(kNobody, kNobody, kNobody) == 0 &&
                              ::setresuid(kNobody, kNobody, kNobody) == 0);
}

}  // namespace quoll::test
