// The button "Open" of a notification about a draft that is kept.
#include <chrono>
#include <csignal>
#include <thread>

#include "quoll/linux/gio/notification.h"
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

TEST_F(NotificationButton, OpensTheDraftOfAProgramThatHasNoService) {
  add_viewer();
  start_desktop("press");
  EXPECT_EQ(compose({"quoll://compose?subject=x"}).status, 0);
  expect_kept_with_button();
  EXPECT_EQ(given(), Words{home_.drafts().front()});
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

TEST_F(NotificationButton, EndsWithItsTime) {
  start_desktop("leave");
  const ScopedEnvironment scoped(home_.bus.environment());
  gio::SessionBus session;
  GDBusConnection* const bus = session.connection(std::chrono::steady_clock::now() + 60s);
  ASSERT_NE(bus, nullptr);
  int answered = 0;
  int ended = 0;
  const auto start = std::chrono::steady_clock::now();
  gio::send_notification(bus, kService, "summary", "body", [&] { ++answered; },
                         {.label = "Open",
                          .longest = 300ms,
                          .chosen = [](const auto&) { ADD_FAILURE() << "nobody pressed it"; },
                          .ended = [&] { ++ended; }});
  gio::run_main_context_until(start + 60s, [&] { return ended != 0; });
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
  EXPECT_EQ(answered, 1);
  EXPECT_EQ(ended, 1);
}

}  // namespace
}  // namespace quoll::test
