// What a person is told who shared from a menu.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/private_bus.h"

namespace quoll::test {
namespace {

class Notify : public testing::Test {
 protected:
  /// One that shows nothing itself.
  void install_receiver() const {
    bus_.add_service("it.vorlent.quoll2",
                     RECEIVER_DOUBLE " bus it.vorlent.quoll2 record " + bus_.path("record"));
  }
  [[nodiscard]] Ended share(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {QUOLL_SHARE, "--notify"});
    return run(arguments, bus_.environment());
  }

  PrivateBus bus_;
};

TEST_F(Notify, WhatWasLeftOutIsShown) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  const Ended ended = share({"https://example.org/", "/nowhere/<a>&b.pdf"});
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: /nowhere/<a>&b.pdf: no such file\n");
  EXPECT_EQ(desktop.read_line(),
            "Not everything is in the draft|Left out: /nowhere/&lt;a&gt;&amp;b.pdf: no such file");
}

TEST_F(Notify, NothingWasShared) {
  Process desktop({NOTIFICATION_DOUBLE}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(share({"https://example.org/"}).status, 1);
  EXPECT_EQ(desktop.read_line(),
            "Nothing was shared|No mail application answers; install the mail application or "
            "quoll-compose");
}

TEST_F(Notify, TheStepsOfAVerboseShareAreNotShown) {
  Process desktop({NOTIFICATION_DOUBLE}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  const Ended ended = share({"--verbose", "/nowhere"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.errors.find("] what was given is read: "), std::string::npos) << ended.errors;
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Left out: /nowhere: no such file");
  EXPECT_TRUE(desktop.read_line().starts_with("Nothing that was given can be shared"));
}

TEST_F(Notify, AShareThatArrivesIsSilent) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(share({"https://example.org/one"}).status, 0);
  EXPECT_EQ(share({"/nowhere"}).status, 1);
  EXPECT_EQ(desktop.read_line().substr(0, 19), "Nothing was shared|") << "of the second one";
}

TEST_F(Notify, WithoutADesktopTheLineIsThereAllTheSame) {
  const Ended ended = share({"/nowhere"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.errors.find("left out: /nowhere: no such file"), std::string::npos);
}

TEST_F(Notify, ThatAnotherShareIsNotFinishedIsShownOnce) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  const std::string locks = bus_.path("containers/K7Q2M9XT4B.quoll/.locks");
  std::filesystem::create_directories(locks);
  posix::UniqueFd lock(open((locks + "/turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
  Process waiting({QUOLL_SHARE, "--notify", "https://example.org/", "/nowhere"},
                  bus_.environment());
  EXPECT_TRUE(desktop.read_line().starts_with("What you share is being prepared|"));
  const std::string shown = desktop.read_line();
  EXPECT_TRUE(shown.starts_with("Another share is not finished yet|Waiting for another share"))
      << shown;
  EXPECT_TRUE(shown.ends_with(" to finish")) << shown;
  lock.reset();
  EXPECT_EQ(desktop.read_line(), "Not everything is in the draft|Left out: /nowhere: no such file");
  EXPECT_EQ(waiting.wait(), 3);
}

/// The first process that `process` has started; empty when there is none.
std::string first_child(const std::string& process) {
  std::string child;
  std::ifstream("/proc/" + process + "/task/" + process + "/children") >> child;
  return child;
}

TEST_F(Notify, WhoeverEndsItEndsTheShare) {
  const std::string locks = bus_.path("containers/K7Q2M9XT4B.quoll/.locks");
  std::filesystem::create_directories(locks);
  const posix::UniqueFd lock(open((locks + "/turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);  // the share waits as long as it is held
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  std::string share;
  {
    const Process program({QUOLL_SHARE, "--notify", "https://example.org/"}, bus_.environment());
    // Once it has started its launcher it has long asked to end with the program.
    while (first_child(share).empty()) {
      share = first_child(std::to_string(program.id()));
    }
  }
  int status = 0;
  ASSERT_EQ(waitpid(std::stoi(share), &status, 0), std::stoi(share))
      << "what it had started is now a child of the test";
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
  EXPECT_GT(wait(nullptr), 0) << "the launcher has ended too";
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 0), 0);
}

class SlowNotify : public Notify {
 protected:
  SlowNotify() {
    const std::string locks = bus_.path("containers/K7Q2M9XT4B.quoll/.locks");
    std::filesystem::create_directories(locks);
    lock_.reset(open((locks + "/turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    EXPECT_EQ(flock(lock_.get(), LOCK_EX), 0);  // the share waits as long as it is held
    std::ofstream(file()) << "the words";
  }
  [[nodiscard]] std::string file() const { return bus_.path("a.txt"); }
  [[nodiscard]] std::string incoming() const {
    return bus_.path("containers/K7Q2M9XT4B.quoll/.incoming");
  }
  void wait_until_prepared() const {
    std::error_code missing;
    while (!std::filesystem::exists(incoming(), missing) ||
           std::filesystem::is_empty(incoming(), missing)) {
      usleep(1000);
    }
    usleep(100'000);
  }

  posix::UniqueFd lock_;
};

TEST_F(SlowNotify, APreparationThatTakesLongCanBeCancelled) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE, "press"}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(share({file()}).status, 128 + SIGTERM);
  EXPECT_EQ(desktop.read_line(),
            "What you share is being prepared|It takes a while; the draft opens by itself.");
  EXPECT_EQ(desktop.read_line(), "[Cancel]");
  EXPECT_TRUE(std::filesystem::is_empty(incoming()));
  EXPECT_EQ(share({"/nowhere"}).status, 1);
  EXPECT_EQ(desktop.read_line().substr(0, 19), "Nothing was shared|") << "of the second one";
}

TEST_F(SlowNotify, ASignalGoesToTheShareAndNothingStays) {
  install_receiver();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Process program({QUOLL_SHARE, "--notify", file()}, bus_.environment());
    wait_until_prepared();
    EXPECT_EQ(kill(program.id(), signal), 0);
    EXPECT_EQ(program.wait(), 128 + signal);
    EXPECT_TRUE(std::filesystem::is_empty(incoming())) << signal;
  }
}

TEST_F(SlowNotify, WhenItsTurnComesTheNotificationGoes) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE, "later:" + bus_.path("pressed")}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  Process program({QUOLL_SHARE, "--notify", file()}, bus_.environment());
  EXPECT_TRUE(desktop.read_line().starts_with("What you share is being prepared|"));
  EXPECT_EQ(desktop.read_line(), "[Cancel]");
  lock_.reset();
  EXPECT_EQ(desktop.read_line(), "closed 1");
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(Notify, ManyLinesAreCutShort) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE}, bus_.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  std::vector<std::string> items{"https://example.org/"};
  for (int i = 0; i < 1000; ++i) {
    items.push_back("/nowhere/" + std::to_string(i));
  }
  const Ended ended = share(items);
  EXPECT_EQ(ended.status, 3);
  EXPECT_TRUE(ended.errors.ends_with("left out: /nowhere/999: no such file\n"));
  EXPECT_EQ(desktop.read_line(),
            "Not everything is in the draft|Left out: /nowhere/0: no such file");
  std::string line;
  std::string last;
  int lines = 1;
  while ((line = desktop.read_line()) != "...") {
    ASSERT_FALSE(line.empty() || line.find("/nowhere/999:") != std::string::npos);
    last = line;
    ++lines;
  }
  EXPECT_LT(lines, 50);
  EXPECT_EQ(last, "Left out: /nowhere/" + std::to_string(lines - 1) + ": no such file");
}

}  // namespace
}  // namespace quoll::test
