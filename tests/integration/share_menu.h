#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/private_bus.h"
#include "tests/integration/receiver_home.h"

namespace quoll::test {

using Json = nlohmann::json;

/// A share menu that the entry connects to, and a receiver behind the entry. Whoever includes this
/// has QUOLL_SHARE_PURPOSE and QUOLL_COMPOSE.
class ShareMenu : public testing::Test {
 protected:
  ShareMenu() : listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, socket_path().c_str());
    EXPECT_EQ(bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    EXPECT_EQ(listen(listener_.get(), 1), 0);
  }

  [[nodiscard]] std::string socket_path() const { return bus_.path("menu"); }
  void install_receiver() const {
    bus_.add_service("it.vorlent.quoll2", std::string(QUOLL_COMPOSE) + " --service");
  }

  /// Chooses the entry in the menu and answers once it has connected.
  void choose() {
    entry_ = std::make_unique<Process>(
        std::vector<std::string>{QUOLL_SHARE_PURPOSE, "--server", socket_path(), "--pluginType",
                                 "Export", "--pluginPath", "/main.bin"},
        bus_.environment());
    connection_ = posix::UniqueFd(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    EXPECT_TRUE(connection_);
  }
  void send(const std::string& bytes) const {
    EXPECT_TRUE(posix::write_all(connection_.get(), bytes));
  }
  void request(const Json& value) const {
    const auto cbor = Json::to_cbor(value);
    send(std::to_string(cbor.size()) + "\n" + std::string(cbor.begin(), cbor.end()));
  }
  /// The last line that the entry says before it closes the socket.
  Json last_word() const {
    std::string said;
    bool ended = false;
    // An entry that did not read everything resets the connection, behind what it said.
    EXPECT_TRUE(posix::read_until(connection_.get(), said, 1 << 20U, ended) || errno == ECONNRESET);
    EXPECT_TRUE(said.ends_with('\n')) << said;
    return Json::parse(said.substr(said.rfind('\n', said.size() - 2) + 1), nullptr, false);
  }
  /// The message files of all drafts, once none is under way any more.
  [[nodiscard]] std::vector<std::string> draft_files() const {
    wait_for_drafts(bus_);
    std::vector<std::string> paths;
    std::error_code missing;
    for (const auto& entry :
         std::filesystem::directory_iterator(bus_.data_home() + "/quoll-compose/drafts", missing)) {
      paths.push_back(entry.path());
    }
    return paths;
  }
  [[nodiscard]] std::vector<std::string> drafts() const {
    std::vector<std::string> texts;
    for (const std::string& path : draft_files()) {
      texts.push_back(read_file(path));
    }
    return texts;
  }
  std::string write(const std::string& name) const {
    std::ofstream(bus_.path(name)) << "the content of " << name;
    return bus_.path(name);
  }

  PrivateBus bus_;
  posix::UniqueFd listener_;
  posix::UniqueFd connection_;
  std::unique_ptr<Process> entry_;
};

/// How the entry ends when everything was shared.
inline const Json kEnd = {{"output", {{"url", ""}}}};

}  // namespace quoll::test
