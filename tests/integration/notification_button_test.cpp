// The button "Open" of a notification about a draft that is kept.
#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include "quoll/linux/gio/notification_buttons.h"
#include "quoll/linux/gio/session_bus.h"
#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kService = "it.vorlent.quoll2";

class NotificationButton : public MailClientTest {
 protected:
  /// A desktop whose person does this with each notification that has a button.
  void start_desktop(const std::string& person) {
    desktop_ =
        std::make_unique<Process>(Words{NOTIFICATION_DOUBLE, person}, home_.bus.environment());
    EXPECT_EQ(desktop_->read_line(), "ready");
  }
  [[nodiscard]] std::unique_ptr<Process> start_service() const {
    auto service = std::make_unique<Process>(Words{QUOLL_COMPOSE, "--service", "--idle", "0.2"},
                                             home_.bus.environment());
    EXPECT_EQ(run({"gdbus", "wait", "--session", kService}, home_.bus.environment()).status, 0);
    return service;
  }
  void open(const std::string& url) const {
    EXPECT_EQ(run({"gdbus", "call", "--session", "--dest", kService, "--object-path",
                   "/it/vorlent/quoll2", "--method", "org.freedesktop.Application.Open",
                   "['" + url + "']", "{}"},
                  home_.bus.environment())
                  .status,
              0);
  }
  void expect_kept_with_button() const {
    EXPECT_EQ(desktop_->read_line(), "The draft is kept|no mail client is chosen for mail links.");
    EXPECT_EQ(desktop_->read_line(), home_.drafts().front());
    EXPECT_EQ(desktop_->read_line(), "[Open]");
  }

  /// The person of "later" and "same" presses the buttons of these notifications.
  void press(const std::string& numbers) const {
    const std::string file = home_.bus.path("pressed");
    std::ofstream(file + ".part") << numbers;
    fs::rename(file + ".part", file);
  }

  std::unique_ptr<Process> desktop_;
};

TEST_F(NotificationButton, OpensTheDraftWithTheTokenOfTheDesktop) {
  add_viewer();
  start_desktop("press");
  const auto service = start_service();
  open("quoll://compose?subject=x");
  expect_kept_with_button();
  EXPECT_EQ(given(), Words{home_.drafts().front()});
  EXPECT_EQ(token_, "token=token-9");
  EXPECT_EQ(service->wait(), 0) << "nothing more can be done";
}

TEST_F(NotificationButton, OpensNoLaterDraftOfTheName) {
  add_viewer();
  start_desktop("later:" + home_.bus.path("pressed"));
  const auto service = start_service();
  open("quoll://compose?subject=x");
  expect_kept_with_button();
  const fs::path draft = home_.drafts().front();
  fs::copy_file(draft, draft.string() + ".later");
  fs::rename(draft.string() + ".later", draft);
  press("1\n");
  EXPECT_EQ(service->wait(), 0);
  std::this_thread::sleep_for(500ms);  // it would be opened by another program
  EXPECT_FALSE(was_started());
}

TEST_F(NotificationButton, AProgramThatEndsHasNone) {
  add_viewer();
  start_desktop("press");
  EXPECT_EQ(compose({"quoll://compose?subject=x"}).status, 0);
  EXPECT_TRUE(desktop_->read_line().starts_with("The draft is kept|"));
  EXPECT_EQ(desktop_->read_line(), home_.drafts().front());
  EXPECT_EQ(compose({"quoll://send"}).status, 1);
  EXPECT_TRUE(desktop_->read_line().starts_with("There is no draft|"));
}

TEST_F(NotificationButton, WhatItCannotOpenIsSaid) {
  start_desktop("press");
  const auto service = start_service();
  open("quoll://compose?subject=x");
  expect_kept_with_button();
  EXPECT_EQ(desktop_->read_line(), "The draft was not opened|nothing opens message files here.");
  EXPECT_EQ(service->wait(), 0);
}

TEST_F(NotificationButton, IsThereUntilTheNotificationIsClosed) {
  add_viewer();
  start_desktop("close");
  const auto service = start_service();
  open("quoll://compose?subject=x");
  expect_kept_with_button();
  EXPECT_EQ(service->wait(), 0);
  EXPECT_FALSE(was_started());
}

TEST_F(NotificationButton, KeepsTheServiceButNotFromEnding) {
  add_viewer();
  start_desktop("leave");
  const auto service = start_service();
  open("quoll://compose?subject=x");
  expect_kept_with_button();
  std::this_thread::sleep_for(1s);  // far more than the idle time
  EXPECT_EQ(run({"gdbus", "wait", "--session", "--timeout", "1", kService}, home_.bus.environment())
                .status,
            0)
      << "it waits for the person";
  EXPECT_FALSE(was_started()) << "the button of another program was pressed";
  kill(service->id(), SIGTERM);
  EXPECT_EQ(service->wait(), 0) << "no alarm had to end it";
}

TEST_F(NotificationButton, IsOnlyThereWhereTheDraftCanBeOpened) {
  choose("thunderbird", "The Bird");
  start_desktop("press");
  const auto service = start_service();
  open(ReceiverHome::url({"/etc/passwd"}));
  EXPECT_TRUE(desktop_->read_line().starts_with("Not everything is in the draft|"));
  EXPECT_EQ(service->wait(), 0);
  EXPECT_EQ(compose({"quoll://send"}).status, 1);
  EXPECT_TRUE(desktop_->read_line().starts_with("There is no draft|")) << "the other had no button";
}

TEST_F(NotificationButton, ShowsTheFilesThatAMailLinkDoesNotCarry) {
  choose("firefox", "Firefox");
  start_desktop("press");
  Process manager(Words{DESKTOP_DOUBLE, "files"}, home_.bus.environment());
  ASSERT_EQ(manager.read_line(), "ready");
  const auto service = start_service();
  open(ReceiverHome::url({home_.stage("a", "x")}));
  EXPECT_EQ(desktop_->read_line(),
            "The draft is kept|Firefox has it without its file (a mail link carries none).");
  EXPECT_EQ(desktop_->read_line(), given_folder() + "/to-attach");
  EXPECT_EQ(desktop_->read_line(), "[Show the files]");
  EXPECT_EQ(desktop_->read_line(), "[Choose a mail program]");
  EXPECT_EQ(manager.read_line(), "file://" + given_folder() + "/to-attach/a");
  EXPECT_EQ(manager.read_line(), "token=token-9");
  EXPECT_EQ(service->wait(), 0);
}

TEST_F(NotificationButton, LetsAPersonChooseAMailProgram) {
  choose("firefox", "Firefox");
  start_desktop("press:ask");
  Process portal(Words{DESKTOP_DOUBLE, "0"}, home_.bus.environment());
  ASSERT_EQ(portal.read_line(), "ready");
  const auto service = start_service();
  open(ReceiverHome::url({home_.stage("a", "x")}));
  const std::string asked = portal.read_line();
  EXPECT_EQ(asked, "asked: " + home_.drafts().front());
  EXPECT_EQ(portal.read_line(), "token=token-9");
  EXPECT_EQ(service->wait(), 0);
}

TEST_F(NotificationButton, DoesNothingThatItWasNotGiven) {
  add_viewer();
  start_desktop("press:delete");
  const auto service = start_service();
  open("quoll://compose?subject=x");
  expect_kept_with_button();
  EXPECT_EQ(service->wait(), 0);
  EXPECT_FALSE(was_started());
  EXPECT_EQ(home_.drafts().size(), 1U);
}

/// The buttons of this program.
class NotificationButtonsOfAProgram : public NotificationButton {
 protected:
  void SetUp() override {
    const std::string address = home_.bus.environment().at("DBUS_SESSION_BUS_ADDRESS").value();
    connection_.reset(g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
    bus_ = connection_.get();
    ASSERT_NE(bus_, nullptr);
  }
  void send(gio::NotificationButtons& buttons, int number) {
    bool is_answered = false;
    buttons.send(
        kService, "summary", "body", {{"open", "Open"}}, [&] { is_answered = true; },
        [this, number](const auto&, const auto&) { pressed_.push_back(number); });
    run_until([&] { return is_answered; });
  }
  template <typename Done>
  void run_until(const Done& done) {
    gio::run_main_context_until(std::chrono::steady_clock::now() + 10s, done);
    EXPECT_TRUE(done());
  }

  gio::ObjectHandle<GDBusConnection> connection_;  // that of the process outlives a test's bus
  GDBusConnection* bus_ = nullptr;
  std::vector<int> pressed_;
};

TEST_F(NotificationButtonsOfAProgram, EndWithTheirTime) {
  start_desktop("leave");
  gio::NotificationButtons buttons(bus_, 300ms);
  const auto start = std::chrono::steady_clock::now();
  send(buttons, 1);
  EXPECT_FALSE(buttons.empty());
  run_until([&] { return buttons.empty(); });
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
  EXPECT_TRUE(pressed_.empty());
}

TEST_F(NotificationButtonsOfAProgram, OnlyTheNewestSixteenCanBePressed) {
  start_desktop("later:" + home_.bus.path("pressed"));
  gio::NotificationButtons buttons(bus_, 1h);
  for (int number = 1; number <= 17; ++number) {
    send(buttons, number);
  }
  press("1\n2\n17\n");
  run_until([&] { return pressed_.size() >= 2; });
  EXPECT_EQ(pressed_, (std::vector{2, 17}));
}

TEST_F(NotificationButtonsOfAProgram, ANumberThatIsGivenAgainNamesTheNewer) {
  start_desktop("same:" + home_.bus.path("pressed"));
  gio::NotificationButtons buttons(bus_, 1h);
  send(buttons, 1);
  send(buttons, 2);
  press("1\n1\n");
  run_until([&] { return buttons.empty(); });
  EXPECT_EQ(pressed_, std::vector{2});
}

TEST_F(NotificationButtonsOfAProgram, EndWithTheDesktopThatHasThem) {
  start_desktop("leave");
  gio::NotificationButtons buttons(bus_, 1h);
  send(buttons, 1);
  EXPECT_FALSE(buttons.empty());
  desktop_.reset();
  run_until([&] { return buttons.empty(); });
}

TEST_F(NotificationButtonsOfAProgram, EndWithTheBus) {
  start_desktop("leave");
  gio::NotificationButtons buttons(bus_, 1h);
  send(buttons, 1);
  g_dbus_connection_close_sync(bus_, nullptr, nullptr);
  run_until([&] { return buttons.empty(); });
}

}  // namespace
}  // namespace quoll::test
