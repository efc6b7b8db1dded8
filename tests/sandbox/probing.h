#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/private_bus.h"
#include "tests/integration/share_home.h"

namespace quoll::test {

/// Makes the same attempts inside a sandbox and without one, in a home of its own.
class Probing : public testing::Test {
 protected:
  Probing();
  /// A test is told as skipped when something could not be shown here, with the reason; what could
  /// be shown was.
  void TearDown() override;

  /// It can be done without the sandbox, and it cannot inside. `version` is that of the kernel's
  /// rules for paths that this rests on, 0 when it does not.
  void only_outside(const std::string& name, int version = 0);
  /// It can be done in both.
  void inside_too(const std::string& name);

  /// What a probe answered: 0 or an `errno` value; `no_answer` when its process ended without.
  [[nodiscard]] virtual int inside(const std::string& name) = 0;
  [[nodiscard]] int outside(const std::string& name);

  [[nodiscard]] static int no_answer(int status) { return -1 - status; }

  /// Runs a command with this standard input, in which the probe is made once the program called
  /// `in` has confined itself.
  [[nodiscard]] int run_probe(const std::string& name, const std::vector<std::string>& command,
                              const std::string& in);

  /// Makes the files as the probes expect them.
  void prepare() const;

  /// Standard input of the probes; /dev/null when it is none.
  posix::UniqueFd input_;
  Environment environment_;
  ShareHome home_;
  Process victim_{{"sleep", "1000"}};

 private:
  std::vector<std::string> skipped_;
};

}  // namespace quoll::test
