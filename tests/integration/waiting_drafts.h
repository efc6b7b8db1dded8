#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "tests/integration/client_home.h"

namespace quoll::test {

/// A home in which drafts wait, and the receiver as a service.
class WaitingDrafts : public MailClientTest {
 protected:
  [[nodiscard]] Ended call(const std::string& destination, const std::string& object,
                           const std::string& method, const Words& arguments) const {
    Words words{"gdbus",         "call", "--session", "--dest", destination,
                "--object-path", object, "--method",  method};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return run(words, home_.bus.environment());
  }
  [[nodiscard]] Ended open(const std::string& urls, const std::string& data = "{}") const {
    return call(kReceiver, "/it/vorlent/quoll2", "org.freedesktop.Application.Open", {urls, data});
  }
  [[nodiscard]] std::unique_ptr<Process> start_service() const {
    auto service = std::make_unique<Process>(Words{QUOLL_COMPOSE, "--service", "--idle", "3600"},
                                             home_.bus.environment());
    while (call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                "org.freedesktop.DBus.GetNameOwner", {kReceiver})
               .status != 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return service;
  }
  /// A client that notes each of its starts in a line.
  void choose_counted(const std::string& program, const std::string& more = "") const {
    add_program("bin/" + program,
                "echo started >> '" + home_.bus.path("starts") + "'$QUOLL_TEST_ROUND\n" + more);
    add_client(program, "X", program + " %u");
    make_default(program);
  }
  /// How often it was started, or was in a round, as its environment names one.
  [[nodiscard]] std::ptrdiff_t starts(const std::string& round = "") const {
    const std::string record = home_.bus.path("starts") + round;
    return std::filesystem::exists(record) ? std::ranges::count(read_file(record), '\n') : 0;
  }
  /// A draft as it waits, with one file of this content.
  void add_waiting(const std::string& name, const std::string& command,
                   const std::string& content = "") const {
    const std::string folder = home_.taken_folder() + "/" + name;
    std::filesystem::create_directories(folder + "/files/0");
    std::ofstream(folder + "/command") << command;
    if (content.empty()) {
      std::filesystem::remove_all(folder + "/files");
    } else {
      std::ofstream(folder + "/files/0/file") << content;
      note_size(name, content.size());
    }
  }
  /// What its file had when it was taken.
  void note_size(const std::string& name, std::uintmax_t size) const {
    std::ofstream(taken_file(name + "/sizes")) << size / 57 * 78 + 5120 << '\n' << size << '\n';
  }
  [[nodiscard]] std::string taken_file(const std::string& name) const {
    return home_.taken_folder() + "/" + name;
  }
  [[nodiscard]] std::string listed() const { return home_.compose({"--list"}).output; }

 private:
  static constexpr const char* kReceiver = "it.vorlent.quoll2";
};

}  // namespace quoll::test
