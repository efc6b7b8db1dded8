#pragma once

#include <string>
#include <vector>

#include "tests/crash/call.h"
#include "tests/integration/process.h"

namespace quoll::crash {

/// What happens to a call.
struct Step {
  enum class Kind {
    kGoOn,
    kKillAll,         ///< every process is killed before the call is made
    kKillOne,         ///< the process that makes it is killed before
    kFail,            ///< it is not made and answers `error`
    kFailAfterwards,  ///< it is made and answers `error` all the same
    kChangeArgument,  ///< it is made with another argument
  };
  Kind kind = Kind::kGoOn;
  int error = 0;
  std::size_t argument = 0;
  std::uint64_t value = 0;
};

/// Decides about each call of a program, in the order in which they are entered.
class Steps {
 public:
  virtual ~Steps() = default;
  virtual Step at(const Call& call) = 0;
  /// True when no further call needs to be seen: the program then runs at its own speed.
  [[nodiscard]] virtual bool is_done() const = 0;
};

/// A process that was ended by a signal that did not come from here.
struct Death {
  std::string process;  // "the program quoll-share"
  int signal = 0;
  bool is_program = false;
};

/// How a program and all that it started ended.
struct SteppedEnd {
  /// The program's exit status, or 128 and the signal.
  int status = -1;
  std::string errors;
  std::vector<Death> deaths;
  /// A process was still running after the time; all were killed then.
  bool is_hung = false;
};

/// Why this machine does not let a program be stepped; empty when it does.
[[nodiscard]] std::string why_not_stepped();

/// Runs a program, its threads and its children under trace until the last of them has ended.
/// `seconds` is the time it gets; 0 is all the time that it wants.
[[nodiscard]] SteppedEnd run_stepped(const std::vector<std::string>& command,
                                     const test::Environment& changes, Steps& steps,
                                     unsigned seconds);

}  // namespace quoll::crash
