#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::test {

/// Changes to the environment: a value, or none to take the variable out.
using Environment = std::map<std::string, std::optional<std::string>>;

/// A program that runs beside the test. It is killed and awaited with this object.
class Process {
 public:
  /// Starts a program found in PATH; throws when it cannot.
  explicit Process(const std::vector<std::string>& command, const Environment& changes = {});
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  /// Waits for a line on its standard output; empty when it ends without one.
  [[nodiscard]] std::string read_line();
  /// All that it still writes on its standard output.
  [[nodiscard]] std::string read_output();
  /// All that it has written on its standard error; after its end.
  [[nodiscard]] std::string errors() const;
  /// Waits for its end and answers its exit status, or 128 and the signal.
  int wait();

  [[nodiscard]] pid_t id() const { return id_; }

 private:
  pid_t id_ = -1;
  posix::UniqueFd output_;
  posix::UniqueFd errors_;
};

struct Ended {
  int status = -1;
  std::string output;
  std::string errors;
};

/// Runs a program to its end.
[[nodiscard]] Ended run(const std::vector<std::string>& command, const Environment& changes = {});

/// Sets and restores variables of this process.
class ScopedEnvironment {
 public:
  explicit ScopedEnvironment(const Environment& changes);
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
  ~ScopedEnvironment();

 private:
  Environment before_;
};

}  // namespace quoll::test
