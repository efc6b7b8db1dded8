#include "quoll/linux/image_helper/helper_process.h"

#include <sys/wait.h>

#include <cerrno>
#include <cstring>

#include "quoll/linux/posix/subprocess.h"

namespace quoll::image_helper {

namespace {

std::string describe(int status) {
  if (WIFSIGNALED(status)) {
    return "the helper was killed by signal " + std::to_string(WTERMSIG(status));
  }
  return "the helper ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

std::string run_helper(const std::string& program, const char* argument, int in, int out,
                       std::chrono::milliseconds time_limit, const std::function<bool()>& go_on) {
  posix::Subprocess helper({.words = {program, argument}, .input = in, .output = out});
  if (const int number = helper.start_error()) {
    return "the helper " + program + " cannot be started: " + std::strerror(number);
  }
  if (const int trouble = helper.end_by(std::chrono::steady_clock::now() + time_limit, go_on)) {
    return trouble == ETIMEDOUT
               ? "the helper took too long"
               : std::string("the helper cannot be watched: ") + std::strerror(trouble);
  }
  // A program that ignores its children's ends is told no status. The seal on the result decides.
  if (helper.ended_well()) {
    return {};
  }
  const std::string reason = helper.complaint();
  return reason.empty() ? describe(*helper.status()) : reason;
}

}  // namespace quoll::image_helper
