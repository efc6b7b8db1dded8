// What a launcher refuses, for somebody who has taken over the program that asks it.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>

#include "quoll/linux/gio/fields.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/message/command_launcher.h"
#include "tests/integration/private_bus.h"
#include "tests/support/recorders.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2";
constexpr const char* kOther = "org.example.Other";
constexpr auto kLong = 60s;

class LauncherLimits : public testing::Test {
 protected:
  LauncherLimits() {
    for (const char* name : {kName, kOther}) {
      bus_.add_service(
          name, std::string(RECEIVER_DOUBLE " bus ") + name + " answer " + bus_.path("record"));
    }
  }
  /// Whether each of these lists of URLs was opened, one after the other.
  std::vector<bool> open(const gio::Openable& openable,
                         const std::vector<std::vector<std::string>>& lists,
                         const std::string& application = kName) {
    const ScopedEnvironment environment(bus_.environment());
    const platform::ScopedDesktop desktop({.log = log_});
    const auto launcher = gio::start_launcher(openable, kLong);
    std::vector<bool> opened;
    for (const auto& list : lists) {
      std::vector<std::shared_ptr<foundation::NSURL>> urls;
      for (const auto& url : list) {
        urls.push_back(foundation::NSURL::URLWithString(url));
      }
      opened.push_back(
          launcher->openURLs(urls, application, platform::NSWorkspaceLaunchAllowingClassicStartup));
    }
    return opened;
  }
  [[nodiscard]] std::string last_line() const {
    const auto lines = log_->lines();
    return lines.empty() ? "" : lines.back();
  }

  PrivateBus bus_;
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(LauncherLimits, NoOtherApplicationIsOpened) {
  EXPECT_EQ(open({}, {{"quoll://compose?"}}, kOther), std::vector<bool>{false});
  EXPECT_EQ(last_line(), "openURLs \"org.example.Other\" is not the mail application");
  EXPECT_EQ(open({.applications = {kOther}}, {{"quoll://compose?"}}, kOther),
            std::vector<bool>{true});
}

TEST_F(LauncherLimits, OnlyTheEditionsOfTheMailApplicationAreOpened) {
  const std::vector<std::vector<std::string>> url{{"quoll://compose?"}};
  for (const std::string_view edition : gio::kEditions) {
    const std::string name(edition);
    bus_.add_service(name, RECEIVER_DOUBLE " bus " + name + " answer " + bus_.path("record"));
    EXPECT_EQ(open({}, url, name), std::vector<bool>{true}) << name;
  }
  for (const std::string name :
       {"it.vorlent.quoll2.Evil", "it.vorlent.quoll2evil", "it.vorlent.quoll.pro",
        "it.vorlent.quoll.beta9", "it.vorlent.quoll2.Quoll-Share"}) {
    bus_.add_service(name, RECEIVER_DOUBLE " bus " + name + " answer " + bus_.path("record"));
    EXPECT_EQ(open({}, url, name), std::vector<bool>{false}) << name;
    EXPECT_EQ(last_line(), "openURLs \"" + name + "\" is not the mail application");
  }
}

// Every edition that an extension asks for is one that the launcher opens.
TEST(LauncherEditions, AreThoseOfTheCommandLauncher) {
  for (const std::string_view edition :
       {it_vorlent_quoll, it_vorlent_quoll_beta8, it_vorlent_quoll_beta10, it_vorlent_quoll_beta11,
        it_vorlent_quoll_2}) {
    EXPECT_NE(std::ranges::find(gio::kEditions, edition), gio::kEditions.end()) << edition;
  }
}

TEST_F(LauncherLimits, NoOtherUrlIsOpened) {
  const std::vector<std::vector<std::string>> lists{{"file:///etc/passwd"},
                                                    {"https://example.org/"},
                                                    {"quoll://compose?", "file:///etc/passwd"},
                                                    {"quoll:compose?"},
                                                    {"quoll://compose?"}};
  EXPECT_EQ(open({}, lists), (std::vector<bool>{false, false, false, false, true}));
  const std::vector<std::vector<std::string>> commands{
      {"quoll://delete?mail=a"}, {"quoll://composed?"}, {"quoll://compose?"}};
  EXPECT_EQ(open({.urls = "quoll://compose?"}, commands), (std::vector<bool>{false, false, true}));
}

TEST_F(LauncherLimits, NotMoreOftenThanItMay) {
  const std::vector<std::string> url{"quoll://compose?"};
  EXPECT_EQ(open({.most_urls = 2}, {url, {"file:///"}, url, url, url}),
            (std::vector<bool>{true, false, true, false, false}));
  EXPECT_EQ(open({.most_urls = 1}, {{"quoll://compose?", "quoll://compose?"}, url}),
            (std::vector<bool>{false, true}));
  EXPECT_EQ(open({.most_urls = 0}, {url}), std::vector<bool>{false});
  EXPECT_EQ(last_line(), "openURLs it has been asked too often");
}

/// The end of the launcher's socket that the program has.
int socket_to_the_launcher() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry.path(), gone).string().starts_with("socket:")) {
      return std::stoi(entry.path().filename());
    }
  }
  return -1;
}

pid_t only_child() {
  const std::string children =
      read_file("/proc/self/task/" + std::to_string(gettid()) + "/children");
  return std::stoi(children);
}

std::string length(std::uint32_t number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string list_of(const std::string& content) {
  return length(static_cast<std::uint32_t>(content.size())) + content;
}

TEST(LauncherMessages, WhatIsNoRequestEndsTheLauncherInOrder) {
  std::string many;
  for (int i = 0; i < (5 << 20); ++i) {
    many += length(0);
  }
  struct Row {
    const char* reason;
    std::string message;
  };
  const Row rows[] = {
      {"an empty list", list_of("")},
      {"a list longer than a bus message", length(0xffffffff)},
      {"a field longer than its list", list_of(length(100) + "short")},
      {"half a length", list_of("ab")},
      {"one field only", list_of(list_of("it.vorlent.quoll2"))},
      {"more fields than URLs fit into a bus message", list_of(many)},
      {"half a list and no more", length(1000) + "half"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.reason);
    const auto launcher = gio::start_launcher({}, kLong);
    const int socket = socket_to_the_launcher();
    ASSERT_GE(socket, 0);
    const pid_t process = only_child();
    for (std::size_t at = 0; at < row.message.size();) {
      const ssize_t sent =
          send(socket, row.message.data() + at, row.message.size() - at, MSG_NOSIGNAL);
      ASSERT_GT(sent, 0);
      at += static_cast<std::size_t>(sent);
    }
    shutdown(socket, SHUT_WR);
    EXPECT_FALSE(gio::receive_fields(socket));
    siginfo_t ended{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(ended.si_code, CLD_EXITED);
    EXPECT_EQ(ended.si_status, 0);
  }
}

}  // namespace
}  // namespace quoll::test
