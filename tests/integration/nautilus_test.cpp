// The extension of Nautilus, loaded and used as Nautilus does it.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/integration/private_bus.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2.Quoll-Share";

class Nautilus : public testing::Test {
 protected:
  // The modules of this machine's desktop are not what is tested.
  Nautilus() { environment_["GIO_MODULE_DIR"] = bus_.path("no-modules"); }

  void TearDown() override { expect_no_crash(); }
  /// The file manager runs, or has ended in order.
  void expect_no_crash() const {
    siginfo_t info{};
    const bool is_there = nautilus_ && waitid(P_PID, static_cast<id_t>(nautilus_->id()), &info,
                                              WEXITED | WNOHANG | WNOWAIT) == 0;
    if (is_there && info.si_pid != 0) {
      EXPECT_EQ(info.si_code, CLD_EXITED) << nautilus_->errors();
      EXPECT_EQ(info.si_status, 0) << nautilus_->errors();
    }
  }
  /// A service that behaves in one of the ways of the double.
  void install(const std::string& how) const {
    bus_.add_service(kName,
                     std::string(RECEIVER_DOUBLE) + " bus " + kName + " " + how + " " + record());
  }
  [[nodiscard]] std::string record() const { return bus_.path("record"); }
  [[nodiscard]] std::string recorded() const {
    while (!std::filesystem::exists(record())) {
      std::this_thread::sleep_for(5ms);
    }
    return read_file(record());
  }
  /// Chooses the item for these files and answers what the file manager printed before.
  std::string choose(const std::vector<std::string>& files) {
    expect_no_crash();
    std::vector<std::string> command{NAUTILUS_DOUBLE, NAUTILUS_QUOLL};
    command.insert(command.end(), files.begin(), files.end());
    nautilus_ = std::make_unique<Process>(command, environment_);
    std::string printed;
    for (std::string line = "x"; !line.empty() && !line.starts_with("background items");) {
      line = nautilus_->read_line();
      printed += line + "\n";
    }
    return printed;
  }

  PrivateBus bus_;
  Environment environment_ = bus_.environment();
  std::unique_ptr<Process> nautilus_;
};

TEST_F(Nautilus, TheSelectionIsHandedOver) {
  install("answer");
  EXPECT_EQ(choose({"file:///home/u/a%20b,c.txt", "file:///home/u/%FF%0A", "file:///home/u/am&p"}),
            "types: 1\nitem: New Message with Quoll\nbackground items: 0\n");
  EXPECT_EQ(recorded(),
            "uri file:///home/u/a%20b,c.txt\nuri file:///home/u/%FF%0A\nuri file:///home/u/am&p\n");
}

TEST_F(Nautilus, WhatLiesElsewhereIsNamedByItsPlaceAmongTheFiles) {
  install("answer");
  choose({"recent:///x|file:///home/u/x", "-", "sftp://host/y"});
  EXPECT_EQ(recorded(), "uri file:///home/u/x\nuri sftp://host/y\n");
}

TEST_F(Nautilus, ThousandsOfFiles) {
  install("answer");
  choose(std::vector<std::string>(5000, "file:///home/u/" + std::string(100, 'x')));
  EXPECT_EQ(std::ranges::count(recorded(), '\n'), 5000);
}

TEST_F(Nautilus, NothingIsSelected) {
  EXPECT_EQ(choose({}), "types: 1\nbackground items: 0\n");
  EXPECT_EQ(nautilus_->wait(), 0);
}

TEST_F(Nautilus, WhatGoesWrongIsShown) {
  Process desktop({NOTIFICATION_DOUBLE}, environment_);
  ASSERT_EQ(desktop.read_line(), "ready");
  choose({"file:///home/u/x"});
  EXPECT_EQ(desktop.read_line(),
            "Nothing was shared|The program that shares is not there; install quoll-share.");
  install("refuse");
  choose({"file:///home/u/x"});
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|It was refused: the disk is full.");
}

TEST_F(Nautilus, AServiceThatEndsIsShown) {
  Process desktop({NOTIFICATION_DOUBLE}, environment_);
  ASSERT_EQ(desktop.read_line(), "ready");
  install("exit");
  choose({"file:///home/u/x"});
  EXPECT_EQ(desktop.read_line(),
            "Nothing was shared|The share ended early; choose the entry again.");
}

TEST_F(Nautilus, WithoutABusTheFileManagerGoesOn) {
  environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
  choose({"file:///home/u/x"});
  while (nautilus_->errors().find("there is no session bus") == std::string::npos) {
    std::this_thread::sleep_for(5ms);
  }
}

TEST(NautilusExtension, ShowsNothingElse) {
  const Ended ended = run({"nm", "--dynamic", "--defined-only", NAUTILUS_QUOLL});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(std::ranges::count(ended.output, '\n'), 3) << ended.output;
}

}  // namespace
}  // namespace quoll::test
