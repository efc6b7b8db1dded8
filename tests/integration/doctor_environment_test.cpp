// What quollctl says of the display and the environment of the mail application.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/integration/doctor_home.h"

namespace quoll::test {
namespace {

// The advice is followed here, and mends it.
TEST_F(Doctor, ABusThatDoesNotKnowTheDisplayIsTold) {
  install_receiver();
  const Environment display{{"DISPLAY", ":7"}};
  const Ended before = doctor({"--json"}, display);
  EXPECT_EQ(before.status, 0) << "the draft is kept";
  EXPECT_TRUE(said(before, "display").starts_with("note: the bus does not know"))
      << said(before, "display");
  std::string command = advised(before, "display");
  EXPECT_TRUE(command.starts_with("dbus-update-activation-environment ")) << command;
  command = command.substr(0, command.find(';'));
  Environment environment = bus_.environment();
  environment["DISPLAY"] = ":7";
  ASSERT_EQ(run({"sh", "-c", command}, environment).status, 0) << command;
  while (is_receiver_running()) {
    usleep(10'000);
  }
  const Ended after = doctor({"--json"}, display);
  EXPECT_EQ(said(after, "display"), "good: known");
  EXPECT_EQ(said(after, "environment"), "good: that of this program");
}

TEST_F(Doctor, WhereNoDisplayIsKnownThatIsTold) {
  const std::string told = "note: no display is known: drafts are kept, no mail client is started";
  install_receiver();
  const Ended by_bus = doctor({"--json"});
  EXPECT_EQ(by_bus.status, 0) << "the draft is kept";
  EXPECT_EQ(said(by_bus, "display"), told);
  EXPECT_EQ(advised(by_bus, "display"),
            "log in to a desktop, or read them with quoll-compose --show");
  bus_.add_entry("it.vorlent.quoll2",
                 "[Desktop Entry]\nType=Application\nName=M\nExec=" QUOLL_COMPOSE " %u\n");
  const Environment no_bus{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"}};
  EXPECT_EQ(said(doctor({"--json"}, no_bus), "display"), told);
  Environment display = no_bus;
  display["WAYLAND_DISPLAY"] = "wayland-7";
  EXPECT_EQ(said(doctor({"--json"}, display), "display"), "good: known");
}

TEST_F(Doctor, ABusThatKnowsAnotherDisplayIsNotCalledBlind) {
  const PrivateBus bus(Environment{{"DISPLAY", ":7"}});
  bus.add_service("it.vorlent.quoll2", QUOLL_COMPOSE " --service --idle 1");
  Environment environment = bus.environment();
  environment["DISPLAY"] = ":8";
  environment["XAUTHORITY"] = "/nowhere";
  const Ended ended = run({QUOLLCTL, "doctor", "--json"}, environment);
  EXPECT_EQ(said(ended, "display"), "good: known");
  EXPECT_EQ(said(ended, "environment"), "note: other than this program's: DISPLAY XAUTHORITY");
}

TEST_F(Doctor, ABusThatKnowsOneKindOfDisplayIsNotBlind) {
  const std::pair<std::string, std::string> x{"DISPLAY", ":7"}, wayland{"WAYLAND_DISPLAY", "w-7"};
  for (const auto& [known, other] : {std::pair(x, wayland), std::pair(wayland, x)}) {
    const PrivateBus bus(Environment{known});
    bus.add_service("it.vorlent.quoll2", QUOLL_COMPOSE " --service --idle 1");
    Environment environment = bus.environment();
    environment[other.first] = other.second;
    const auto check = [&](const std::string& told) {
      const Ended ended = run({QUOLLCTL, "doctor", "--json"}, environment);
      EXPECT_EQ(said(ended, "display"), "good: known");
      EXPECT_EQ(said(ended, "environment"), told);
    };
    check("note: other than this program's: " + other.first);
    environment[known.first] = known.second;
    check("note: other than this program's: " + other.first);
    environment[other.first] = std::nullopt;
    check("good: that of this program");
  }
}

TEST_F(Doctor, ARunningMailApplicationIsComparedToo) {
  const std::vector<std::string> mail{RECEIVER_DOUBLE, "bus", "it.vorlent.quoll2", "record",
                                      bus_.path("record")};
  const auto found = [&](const Environment& more) {
    Environment environment = bus_.environment();
    for (const auto& [name, value] : more) {
      environment[name] = value;
    }
    const Process running(mail, environment);
    while (!is_receiver_running()) {
      usleep(1000);
    }
    const Ended ended = doctor({"--json"});
    EXPECT_EQ(said(ended, "mail application"), "good: it.vorlent.quoll2 is running");
    return said(ended, "environment");
  };
  EXPECT_EQ(found({}), "good: that of this program");
  EXPECT_EQ(found({{"XDG_CURRENT_DESKTOP", "Other"}}), "good: that of this program")
      << "what is set there alone does no harm";
  EXPECT_EQ(found({{"XDG_DATA_DIRS", "/nowhere"}}),
            "note: other than this program's: XDG_DATA_DIRS");
  EXPECT_EQ(found({{"QUOLL_GROUP_CONTAINERS", "/elsewhere"}}),
            "BROKEN: the mail application looks for shared files elsewhere: /elsewhere");
}

TEST_F(Doctor, WhatTheBusDoesNotKnowOfTheHomeIsTold) {
  const PrivateBus bus({{"HOME", std::nullopt}, {"XDG_DATA_HOME", std::nullopt}});
  bus.add_service("it.vorlent.quoll2", QUOLL_COMPOSE " --service --idle 1");
  Environment environment = bus.environment();
  environment["HOME"] = bus.path("home");
  environment["QUOLL_IMAGE_HELPER"] = QUOLL_IMAGE_HELPER;
  const Ended ended = run({QUOLLCTL, "doctor", "--json"}, environment);
  EXPECT_EQ(said(ended, "mail application"),
            "BROKEN: the mail application refuses: there is no home folder to keep "
            "drafts in; set HOME");
  EXPECT_EQ(said(ended, "environment"), "note: other than this program's: HOME");
}

}  // namespace
}  // namespace quoll::test
