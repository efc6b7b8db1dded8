#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/integration/receiver_home.h"

namespace quoll::test {

using Words = std::vector<std::string>;

inline bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// A desktop with a home, in which scripts stand in place of mail clients; their entries are real.
class MailClientTest : public testing::Test {
 protected:
  void add_program(const std::string& name, const std::string& script) const {
    const std::string path = programs_.path(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }
  /// A program that writes down what it was given, and then does `more`.
  void add_client_program(const std::string& name, const std::string& more = "") const {
    const std::string record = home_.bus.path("given");
    add_program(name, "printf '%s\\0' \"$@\" \"token=$XDG_ACTIVATION_TOKEN\" > '" + record +
                          ".part'\nmv '" + record + ".part' '" + record + "'\n" + more + "\n");
  }
  void add_client(const std::string& id, const std::string& name, const std::string& exec,
                  const std::string& more = "") const {
    home_.bus.add_entry(id, "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec +
                                "\nMimeType=x-scheme-handler/mailto;\n" + more);
  }
  void make_default(const std::string& id) const {
    std::ofstream(home_.bus.path("config/mimeapps.list"))
        << "[Default Applications]\nx-scheme-handler/mailto=" << id << ".desktop\n";
  }
  /// The default: `program` in PATH with an entry of its own.
  void choose(const std::string& program, const std::string& name,
              const std::string& more_in_script = "") const {
    add_client_program("bin/" + program, more_in_script);
    add_client(program, name, program + " --flag %u");
    make_default(program);
  }
  /// The entry with which this desktop opens message files.
  void add_viewer() const {
    add_client_program("bin/viewer");
    home_.bus.add_entry("viewer",
                        "[Desktop Entry]\nType=Application\nName=A Viewer\nExec=viewer --flag "
                        "%u\nMimeType=message/rfc822;\n");
    std::ofstream(home_.bus.path("config/mimeapps.list"))
        << "[Default Applications]\nmessage/rfc822=viewer.desktop\n";
  }
  /// What the program was given, without the flag in front.
  [[nodiscard]] Words given() {
    while (!std::filesystem::exists(home_.bus.path("given"))) {
      usleep(10000);
    }
    Words words;
    std::istringstream record(read_file(home_.bus.path("given")));
    for (std::string word; std::getline(record, word, '\0');) {
      words.push_back(word);
    }
    token_ = words.back();
    words.pop_back();
    if (!words.empty() && words.front() == "--flag") {
      words.erase(words.begin());
    }
    return words;
  }
  [[nodiscard]] Ended compose(const Words& arguments) const {
    Words command{QUOLL_COMPOSE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    // Each call is tested for itself: what was offered before it is no flood.
    std::filesystem::remove(home_.bus.data_home() + "/quoll-compose/recent-offers");
    Environment environment = home_.bus.environment();
    environment["XDG_ACTIVATION_TOKEN"] = "token-1";
    // The modules of this machine's desktop are not what is tested.
    environment["GIO_MODULE_DIR"] = home_.bus.path("no-modules");
    return run(command, environment);
  }
  [[nodiscard]] bool was_started() const {
    return std::filesystem::exists(home_.bus.path("given"));
  }
  [[nodiscard]] std::string given_folder() const {
    return home_.bus.data_home() + "/quoll-compose/given/" +
           std::filesystem::path(home_.drafts().front()).stem().string();
  }
  [[nodiscard]] bool is_marked() const {
    return std::filesystem::exists(given_folder() + "/given");
  }

  std::string token_;  ///< of the last program
  TemporaryFolder programs_;
  ReceiverHome home_{
      {{"DISPLAY", ":99"}, {"PATH", programs_.path("bin") + ":" + std::getenv("PATH")}}};
};

}  // namespace quoll::test
