#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

/// Waits for the end of a child process and answers its status, as `waitpid` has it; none when this
/// program ignores how its children end.
std::optional<int> reap(pid_t process);

/// Waits until a child process has ended, which then still has to be reaped. Answers 0, ETIMEDOUT
/// when it runs at the deadline, or the `errno` value that says why it cannot be waited for.
[[nodiscard]] int wait_for_end(pid_t process, std::chrono::steady_clock::time_point deadline);

/// How a program is started.
struct Command {
  /// The program, a path or a name in PATH, and its arguments.
  std::vector<std::string> words;
  /// Standard input and output, both above the standard streams; -1 is /dev/null.
  int input = -1;
  int output = -1;
  /// True for the first of a process group, which ends with it as a whole.
  bool leads_group = false;
};

/// A program that was started. It has its three standard streams and no other descriptor, and no
/// signal is blocked or ignored. It does not outlive this object.
class Subprocess {
 public:
  explicit Subprocess(const Command& command);
  Subprocess(const Subprocess&) = delete;
  Subprocess& operator=(const Subprocess&) = delete;
  ~Subprocess();

  /// Why it could not be started, an `errno` value; 0 when it was.
  [[nodiscard]] int start_error() const { return start_error_; }

  /// Waits for the end; at the deadline it kills the program. Answers 0 when it came by itself, and
  /// else what `wait_for_end` does. Called once, of what was started. `go_on` is asked ten times a
  /// second, unless it is null; when it answers false the program is killed, which is ECANCELED.
  int end_by(std::chrono::steady_clock::time_point deadline,
             const std::function<bool()>& go_on = nullptr);

  /// Once it has ended: the status, as `reap` answers it. Without one it counts as ended well.
  [[nodiscard]] std::optional<int> status() const { return status_; }
  [[nodiscard]] bool ended_well() const;

  /// What came on its standard error and was not read yet, as it came; no more than `most` bytes.
  [[nodiscard]] std::string errors(std::size_t most) const;
  /// What its standard error begins with: the first line, as it came.
  [[nodiscard]] std::string complaint() const;

 private:
  UniqueFd errors_;
  int start_error_ = 0;
  /// -1 when there is none or it was reaped.
  pid_t process_ = -1;
  bool leads_group_ = false;
  std::optional<int> status_;
};

/// What a small program of the system answered.
struct ProgramAnswer {
  enum class End {
    kWell,
    kBadly,    ///< it said so: see `complaint`
    kSilent,   ///< it delivered nothing for too long, or took too long in all, and was ended
    kTooLong,  ///< it delivered more than `most` bytes, and was ended
    kMissing,  ///< there is no such program
  };

  End end = End::kMissing;
  std::string output;
  std::string complaint;  ///< the first line of its standard error, cut short and printable
};

/// Runs a program of PATH to its end, with nothing on its standard input. It is ended, with the
/// processes that it started, when it delivers nothing for `read_timeout`, and at the deadline.
[[nodiscard]] ProgramAnswer run_program(const std::vector<std::string>& command, std::size_t most,
                                        std::chrono::milliseconds read_timeout,
                                        std::chrono::steady_clock::time_point deadline);

}  // namespace quoll::posix
