#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "quoll/foundation/percent.h"
#include "tests/integration/private_bus.h"

namespace quoll::test {

/// Waits until every draft that was taken in this home is written and given, or kept.
inline void wait_for_drafts(const PrivateBus& bus) {
  const std::filesystem::path taken = bus.data_home() + "/quoll-compose/taken";
  while (std::filesystem::exists(taken) && !std::filesystem::is_empty(taken)) {
    usleep(5000);
  }
}

/// A home with a bus and a shared container, in which the receiver works.
class ReceiverHome {
 public:
  explicit ReceiverHome(const Environment& more = {}) : bus(more) {
    std::filesystem::create_directories(staging());
  }

  PrivateBus bus;

  [[nodiscard]] std::string staging() const {
    return bus.path("containers/K7Q2M9XT4B.quoll/SharedData/Share");
  }
  /// Puts a file into the staging folder and answers its path.
  [[nodiscard]] std::string stage(const std::string& name, const std::string& content) const {
    const std::string path = staging() + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }
  /// A compose command with these attachments and whatever else.
  [[nodiscard]] static std::string url(const std::vector<std::string>& attachments,
                                       const std::string& more = "subject=S") {
    std::string text = "quoll://compose?" + more;
    for (std::size_t at = 0; at < attachments.size(); ++at) {
      text +=
          "&attachment_" + std::to_string(at) + "=" + foundation::percent_encode(attachments[at]);
    }
    return text;
  }
  [[nodiscard]] Ended compose(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{QUOLL_COMPOSE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, bus.environment());
  }
  [[nodiscard]] std::string drafts_folder() const {
    return bus.data_home() + "/quoll-compose/drafts";
  }
  /// The paths of all files in the drafts' folder.
  [[nodiscard]] std::vector<std::string> drafts() const { return files_in(drafts_folder()); }
  [[nodiscard]] std::string taken_folder() const {
    return bus.data_home() + "/quoll-compose/taken";
  }
  [[nodiscard]] std::string given_folder() const {
    return bus.data_home() + "/quoll-compose/given";
  }
  /// What was taken and is not written, also what is half taken.
  [[nodiscard]] std::vector<std::string> taken() const { return files_in(taken_folder()); }
  void wait_for_drafts() const { test::wait_for_drafts(bus); }
  /// What an independent reader finds in the only draft.
  [[nodiscard]] std::string read_only_draft() const {
    const auto all = drafts();
    return all.size() == 1 ? read_message(all.front()) : std::to_string(all.size()) + " drafts";
  }
  [[nodiscard]] static std::string read_message(const std::string& path) {
    const auto read = run({"python3", READ_MESSAGE, path});
    return read.output + read.errors;
  }

 private:
  static std::vector<std::string> files_in(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
      paths.push_back(entry.path());
    }
    return paths;
  }
};

}  // namespace quoll::test
