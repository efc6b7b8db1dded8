// The receiver as the bus starts it, with the launcher at the other end.
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "quoll/linux/gio/launcher.h"
#include "tests/integration/receiver_home.h"
#include "tests/support/recorders.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2";
constexpr auto kForeground = platform::NSWorkspaceLaunchAllowingClassicStartup;

class ComposeServiceTest : public testing::Test {
 protected:
  /// The idle time is in seconds, as the program takes it.
  explicit ComposeServiceTest(const std::string& idle = "0.2") {
    home_.bus.add_service(kName, std::string(QUOLL_COMPOSE) + " --service --idle " + idle);
  }
  bool open(const std::vector<std::string>& urls) {
    std::vector<std::shared_ptr<foundation::NSURL>> list;
    for (const auto& url : urls) {
      list.push_back(foundation::NSURL::URLWithString(url));
    }
    const ScopedEnvironment environment(home_.bus.environment());
    const platform::ScopedDesktop desktop({.log = log_});
    return gio::start_launcher({}, 60s)->openURLs(list, kName, kForeground);
  }

  ReceiverHome home_;
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(ComposeServiceTest, TheSendersFilesMayGoAsSoonAsItAnswered) {
  const std::string content(3U << 20U, 'x');
  const std::string path = home_.stage("big.txt", content);
  ASSERT_TRUE(open({ReceiverHome::url({path}, "subject=from%20the%20bus")}));
  std::filesystem::remove_all(home_.staging());
  const auto shown = home_.compose({"--show"});  // waits for the draft that is under way
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_NE(shown.output.find("Subject: from the bus\n"), std::string::npos) << shown.output;
  EXPECT_NE(shown.output.find("  big.txt (text/plain, 3.1 MB)\n"), std::string::npos)
      << shown.output;
  ASSERT_EQ(home_.drafts().size(), 1U);
  EXPECT_GT(std::filesystem::file_size(home_.drafts().front()), content.size());
}

TEST_F(ComposeServiceTest, WhatAKilledShareLeftIsSweptAtTheStart) {
  const std::string left =
      home_.bus.path("containers/K7Q2M9XT4B.quoll/.incoming/.quoll-incoming-1");
  std::filesystem::create_directories(left + "/1");
  ASSERT_TRUE(open({"quoll://compose?subject=a"}));
  EXPECT_FALSE(std::filesystem::exists(left));
}

TEST_F(ComposeServiceTest, SeveralDraftsOfOneRequestAreAllKept) {
  ASSERT_TRUE(open({"quoll://compose?subject=a", "quoll://compose?subject=b"}));
  home_.wait_for_drafts();
  EXPECT_EQ(home_.drafts().size(), 2U);
}

TEST_F(ComposeServiceTest, WhatCannotBeTakenIsAnErrorWithItsReason) {
  EXPECT_FALSE(open({"quoll://compose?subject=a", "quoll://delete?mail=a"}));
  ASSERT_EQ(log_->events().size(), 1U);
  const auto error = log_->events().front().error;
  ASSERT_TRUE(error);
  EXPECT_NE(error->text.find("the command \"delete\" needs the mail application"),
            std::string::npos)
      << error->text;
  EXPECT_EQ(home_.compose({"--list"}).output, "");  // all or nothing
}

TEST_F(ComposeServiceTest, AnAttachmentFromElsewhereIsNotInTheDraft) {
  ASSERT_TRUE(open({ReceiverHome::url({"/etc/passwd", home_.stage("a", "x")})}));
  const auto shown = home_.compose({"--show"}).output;
  EXPECT_NE(shown.find("Attachments: 1\n"), std::string::npos) << shown;
}

TEST_F(ComposeServiceTest, TheOtherMethodsOfAnApplicationAreAnswered) {
  const auto send = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"gdbus", "call",          "--session",          "--dest",
                                     kName,   "--object-path", "/it/vorlent/quoll2", "--method"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, home_.bus.environment());
  };
  EXPECT_EQ(send({"org.freedesktop.Application.Activate", "{}"}).status, 0);
  const auto action = send({"org.freedesktop.Application.ActivateAction", "x", "[]", "{}"});
  EXPECT_NE(action.status, 0);
  EXPECT_NE(action.errors.find("there are no actions"), std::string::npos) << action.errors;
}

TEST_F(ComposeServiceTest, WithoutABusTheServiceSaysSo) {
  Environment environment = home_.bus.environment();
  environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
  const auto ended = run({QUOLL_COMPOSE, "--service"}, environment);
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.errors.find("there is no session bus"), std::string::npos) << ended.errors;
}

TEST_F(ComposeServiceTest, ASecondServiceLeavesTheNameToTheFirst) {
  const std::vector<std::string> command{QUOLL_COMPOSE, "--service", "--idle", "3600"};
  const Process first(command, home_.bus.environment());
  while (run({"gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
              "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.GetNameOwner", kName},
             home_.bus.environment())
             .status != 0) {
    std::this_thread::sleep_for(10ms);
  }
  const auto second = run(command, home_.bus.environment());
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.errors.find("another program answers to"), std::string::npos) << second.errors;
}

TEST_F(ComposeServiceTest, TheServiceAnswersToTheIdentifierOfItsEdition) {
  Environment environment = home_.bus.environment();
  environment["QUOLL_BUNDLE_IDENTIFIER"] = "it.vorlent.quoll.beta8";
  const Process service({QUOLL_COMPOSE, "--service", "--idle", "3600"}, environment);
  while (run({"gdbus", "call", "--session", "--dest", "it.vorlent.quoll.beta8", "--object-path",
              "/it/vorlent/quoll/beta8", "--method", "org.freedesktop.Application.Activate", "{}"},
             environment)
             .status != 0) {
    std::this_thread::sleep_for(10ms);
  }
}

class ShortLivedServiceTest : public ComposeServiceTest {
 protected:
  // It gives its name back as soon as it has nothing to do, which is while the next request comes.
  ShortLivedServiceTest() : ComposeServiceTest("0.001") {}
};

TEST_F(ShortLivedServiceTest, NothingIsLostWhileTheServiceEnds) {
  constexpr int kRequests = 60;
  const ScopedEnvironment environment(home_.bus.environment());
  const platform::ScopedDesktop desktop({.log = log_});
  const auto launcher = gio::start_launcher({}, 60s);
  for (int number = 0; number < kRequests; ++number) {
    const auto url =
        foundation::NSURL::URLWithString("quoll://compose?subject=" + std::to_string(number));
    EXPECT_TRUE(launcher->openURLs({url}, kName, kForeground)) << number;
    std::this_thread::sleep_for(std::chrono::microseconds(number * 100));
  }
  EXPECT_TRUE(log_->lines().empty()) << log_->lines().front();
  home_.wait_for_drafts();
  EXPECT_EQ(home_.drafts().size(), static_cast<std::size_t>(kRequests));
}

}  // namespace
}  // namespace quoll::test
