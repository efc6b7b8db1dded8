#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"
#include "quoll/message/extension_message.h"
#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// A home in which things are shared with `quoll-share --print`, without a bus.
class ShareHome {
 public:
  ShareHome() {
    std::filesystem::create_directory(folder_.path("containers"));
    std::filesystem::create_directory(folder_.path("tmp"));
    environment_ = {{"QUOLL_GROUP_CONTAINERS", folder_.path("containers")},
                    {"HOME", folder_.path()},
                    {"TMPDIR", folder_.path("tmp")},
                    {"QUOLL_IMAGE_HELPER", QUOLL_IMAGE_HELPER},
                    {"QUOLL_BUNDLE_IDENTIFIER", std::nullopt}};
  }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_.path(name); }
  std::string write(const std::string& name, const std::string& content) const {
    return folder_.write(name, content);
  }
  [[nodiscard]] std::string container() const {
    return folder_.path("containers/K7Q2M9XT4B.quoll");
  }
  [[nodiscard]] std::string staging() const { return container() + "/SharedData/Share"; }
  [[nodiscard]] Environment& environment() { return environment_; }

  /// The command line of a share that reads its standard input from a file.
  [[nodiscard]] static std::vector<std::string> command(const std::vector<std::string>& arguments,
                                                        const std::string& input = "/dev/null") {
    std::vector<std::string> all{"sh", "-c",  "input=$1; shift; exec \"$@\" <\"$input\"",
                                 "sh", input, QUOLL_SHARE};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
  }
  [[nodiscard]] Ended share(const std::vector<std::string>& arguments,
                            const std::string& input = "/dev/null") const {
    return run(command(arguments, input), environment_);
  }
  /// Shares these and prints the command instead of opening it.
  [[nodiscard]] Ended print(std::vector<std::string> arguments,
                            const std::string& input = "/dev/null") const {
    arguments.insert(arguments.begin(), "--print");
    return share(arguments, input);
  }
  /// True when bytes that came without a file still lie somewhere.
  [[nodiscard]] bool has_received_files() const {
    const std::string incoming = container() + "/.incoming";
    return (std::filesystem::exists(incoming) && !std::filesystem::is_empty(incoming)) ||
           !std::filesystem::is_empty(folder_.path("tmp"));
  }

 private:
  TemporaryFolder folder_;
  Environment environment_;
};

/// The message of a printed command.
inline std::shared_ptr<ExtensionMessage> message_of(const std::string& printed) {
  return ExtensionMessage::ExtensionMessageWithUrl(
      foundation::NSURL::URLWithString(printed.substr(0, printed.find('\n'))));
}

/// The paths of its attachments.
inline std::vector<std::string> attachments_of(const std::string& printed) {
  std::vector<std::string> paths;
  for (const auto& attachment : message_of(printed)->attachments()) {
    paths.push_back(attachment.description());
  }
  return paths;
}

/// True once a process has ended: a child also when it still has to be awaited.
inline bool has_ended(pid_t process) {
  siginfo_t ended{};
  const bool is_child =
      waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) == 0;
  return is_child ? ended.si_pid == process : kill(process, 0) != 0;
}

/// Waits until a process waits for an flock lock; false when it ended before.
inline bool waits_for_lock(pid_t process) {
  const std::string mark = " " + std::to_string(process) + " ";
  while (!has_ended(process)) {
    std::istringstream locks(read_file("/proc/locks"));
    for (std::string line; std::getline(locks, line);) {
      if (line.find("-> FLOCK") != std::string::npos && line.find(mark) != std::string::npos) {
        return true;
      }
    }
    usleep(1000);
  }
  return false;
}

}  // namespace quoll::test
