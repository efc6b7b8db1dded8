// A receiver that is told to end ends, and one that gets no process loses nothing.
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2";

class Ending : public MailClientTest {
 protected:
  Ending() { EXPECT_EQ(desktop_.read_line(), "ready"); }

  [[nodiscard]] Ended open(const std::string& url) const {
    return run(
        {"gdbus", "call", "--session", "--dest", kName, "--object-path", "/it/vorlent/quoll2",
         "--method", "org.freedesktop.Application.Open", "['" + url + "']", "{}"},
        home_.bus.environment());
  }
  [[nodiscard]] std::unique_ptr<Process> start_service(const Words& more = {}) const {
    Words words{QUOLL_COMPOSE, "--service"};
    words.insert(words.end(), more.begin(), more.end());
    auto service = std::make_unique<Process>(words, home_.bus.environment());
    EXPECT_EQ(run({"gdbus", "wait", "--session", kName}, home_.bus.environment()).status, 0);
    return service;
  }
  /// The same as `home_.compose`, where the system has only so many processes left.
  [[nodiscard]] Ended compose_with(const std::string& forks, const std::string& argument) const {
    Environment environment = home_.bus.environment();
    environment["LD_PRELOAD"] = QUOLL_FEW_PROCESSES;
    environment["FORKS"] = forks;
    return run({QUOLL_COMPOSE, argument}, environment);
  }

  Process desktop_{{NOTIFICATION_DOUBLE}, home_.bus.environment()};
};

TEST_F(Ending, ADesktopThatDoesNotAnswerHoldsUpNothing) {
  const auto service = start_service();
  kill(desktop_.id(), SIGSTOP);
  EXPECT_NE(open("quoll://send").status, 0);
  std::this_thread::sleep_for(100ms);  // it is sent by then
  kill(service->id(), SIGTERM);
  EXPECT_EQ(service->wait(), 0) << "no alarm had to end it";
  kill(desktop_.id(), SIGCONT);
  EXPECT_TRUE(desktop_.read_line().starts_with("There is no draft|")) << "it was sent";
}

TEST_F(Ending, WhatComesBeforeTheDesktopHasAnsweredBecomesFew) {
  const auto service = start_service();
  kill(desktop_.id(), SIGSTOP);
  for (int call = 0; call < 8; ++call) {
    EXPECT_NE(open("quoll://send").status, 0);
  }
  kill(desktop_.id(), SIGCONT);
  for (int line = 0; line < 4; ++line) {
    EXPECT_TRUE(desktop_.read_line().starts_with("There is no draft|"));
  }
  EXPECT_TRUE(desktop_.read_line().starts_with("4 more drafts were not as they should be|"));
}

// The bus does not answer either, when the name is given back to it.
TEST_F(Ending, AMainThreadThatIsHeldUpIsEndedByItsAlarm) {
  int status = 0;
  for (int tries = 1; status == 0 && tries <= 5; ++tries) {
    const auto service = start_service({"--idle", "0.3"});
    kill(home_.bus.daemon(), SIGSTOP);
    std::this_thread::sleep_for(500ms * tries);  // it is held up by then
    kill(service->id(), SIGTERM);
    status = service->wait();
    kill(home_.bus.daemon(), SIGCONT);
  }
  EXPECT_EQ(status, 128 + SIGALRM);
}

TEST_F(Ending, WithoutAProcessForItADraftWaitsAndItIsSaid) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer forks by its own function";
  }
  choose("claws-mail", "X");
  for (const char* const forks : {"0", "1"}) {  // for the server, and for its first child
    const auto ended = compose_with(forks, "quoll://compose?subject=x");
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(holds(ended.output,
                      " waits: no process can be started to write the "
                      "draft: "))
        << forks << ended.output << ended.errors;
    EXPECT_EQ(home_.taken().size(), 1U);
    EXPECT_EQ(compose({"quoll://send"}).status, 1);
    ASSERT_TRUE(desktop_.read_line().starts_with("A draft waits|no process can be started to "));
    static_cast<void>(desktop_.read_line());
    EXPECT_EQ(desktop_.read_line(), home_.taken().front());
    EXPECT_TRUE(desktop_.read_line().starts_with("There is no draft|"));
    EXPECT_EQ(home_.compose({"--resume"}).status, 0);
    EXPECT_TRUE(home_.taken().empty());
  }
}

}  // namespace
}  // namespace quoll::test
