#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// A session bus of the test's own, and a home with nothing in it but what the test puts there. The
/// programs that the bus starts see the same home.
class PrivateBus {
 public:
  /// `more` is added to the environment. `start_limit` is how long a program that the bus starts
  /// may take to answer to its name.
  explicit PrivateBus(const Environment& more = {},
                      std::chrono::milliseconds start_limit = std::chrono::seconds(25));

  /// What a program needs to live on this bus and in this home.
  [[nodiscard]] const Environment& environment() const { return environment_; }
  [[nodiscard]] std::string path(const std::string& name) const { return folder_.path(name); }
  [[nodiscard]] std::string data_home() const { return folder_.path("data"); }

  /// The path of the socket on which the bus listens. Throws when it has none.
  [[nodiscard]] std::string socket() const;
  /// The process of the bus.
  [[nodiscard]] pid_t daemon() const { return daemon_->id(); }

  /// Lets the bus start `command` for whoever asks for `name`.
  void add_service(const std::string& name, const std::string& command) const;
  /// Puts `<name>.desktop` among the applications.
  void add_entry(const std::string& name, const std::string& content) const;

 private:
  TemporaryFolder folder_;
  Environment environment_;
  std::unique_ptr<Process> daemon_;
};

}  // namespace quoll::test
