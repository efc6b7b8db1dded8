// The whole road: shared on a private bus, and received by the program that writes drafts.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/integration/private_bus.h"
#include "tests/integration/receiver_home.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

constexpr const char* kReceiver = "it.vorlent.quoll2";

std::vector<std::string> drafts_of(const PrivateBus& bus) {
  std::vector<std::string> paths;
  std::error_code missing;
  for (const auto& entry :
       std::filesystem::directory_iterator(bus.data_home() + "/quoll-compose/drafts", missing)) {
    paths.push_back(entry.path());
  }
  return paths;
}

TEST(ShareByBus, TheReceiverWritesTheDraft) {
  const PrivateBus bus;
  bus.add_service(kReceiver, std::string(QUOLL_COMPOSE) + " --service");
  const std::string file = bus.path("report.txt");
  std::ofstream(file) << "the content";
  const Ended ended =
      run({QUOLL_SHARE, "--title", "A title", file, "https://example.org/", file, "data:,more"},
          bus.environment());
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.errors, "");
  wait_for_drafts(bus);  // the share ends when its files are taken
  const auto drafts = drafts_of(bus);
  ASSERT_EQ(drafts.size(), 1U);
  const std::string draft = read_file(drafts[0]);
  EXPECT_NE(draft.find("Subject: A title"), std::string::npos);
  const std::size_t first = draft.find("report.txt");
  const std::size_t second = draft.find("report_1.txt");
  EXPECT_LT(first, second) << "attachments stand in the order in which they were picked";
  EXPECT_LT(second, draft.find("data.txt"));
  EXPECT_NE(draft.find("data.txt"), std::string::npos);
  EXPECT_NE(draft.find("https://example.org/"), std::string::npos);
}

TEST(ShareByBus, WhatTheReceiverLeavesOutIsTold) {
  const PrivateBus bus;
  const std::string record = bus.path("record");
  std::ofstream(record + ".left-out") << "/drafts/1.eml\na.txt: it is a \x1Blink\n";
  bus.add_service(kReceiver, RECEIVER_DOUBLE " bus it.vorlent.quoll2 left-out " + record);
  const Ended ended = run({QUOLL_SHARE, "https://example.org/"}, bus.environment());
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: a.txt: it is a \\x1Blink\n");
}

/// A home in which a program takes commands from its command line, and says when it has.
class ShareByEntry : public testing::Test {
 protected:
  ShareByEntry() {
    environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
    environment_["QUOLL_GROUP_CONTAINERS"] = bus_.path("containers");
  }
  void add_receiver(const std::string& how) const {
    bus_.add_entry(kReceiver,
                   "[Desktop Entry]\nType=Application\nName=Double\n"
                   "Exec=" RECEIVER_DOUBLE " take " +
                       how + " " + bus_.path("record") + " %U\nX-Quoll-TakenPipe=true\n");
  }
  [[nodiscard]] std::string write(const std::string& name) const {
    std::ofstream(bus_.path(name)) << name;
    return bus_.path(name);
  }
  [[nodiscard]] std::string staged(const std::string& name) const {
    return bus_.path("containers/K7Q2M9XT4B.quoll/SharedData/Share/" + name);
  }

  PrivateBus bus_;
  Environment environment_ = bus_.environment();
};

TEST_F(ShareByEntry, TheNextShareWaitsUntilTheFilesAreTaken) {
  add_receiver("wait");
  Process first({QUOLL_SHARE, write("first.txt")}, environment_);
  while (!std::filesystem::exists(bus_.path("record")) && !has_ended(first.id())) {
    usleep(1000);
  }
  Process second({QUOLL_SHARE, write("second.txt")}, environment_);
  EXPECT_TRUE(waits_for_lock(second.id()));
  EXPECT_TRUE(std::filesystem::exists(staged("first.txt")));
  std::ofstream(bus_.path("record.go")) << "";
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);
  EXPECT_TRUE(std::filesystem::exists(staged("second.txt")));
  EXPECT_FALSE(std::filesystem::exists(staged("first.txt")));
}

TEST_F(ShareByEntry, WhatTheReceiverLeavesOutIsTold) {
  add_receiver("tell");
  std::ofstream(bus_.path("record.left-out")) << "/drafts/1.eml\na.txt: it is a link\n";
  const Ended ended = run({QUOLL_SHARE, write("a.txt")}, environment_);
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: a.txt: it is a link\n");
}

TEST(ShareByBus, NobodyToReceive) {
  const PrivateBus bus;
  const Ended ended = run({QUOLL_SHARE, "https://example.org/"}, bus.environment());
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "not opened: no mail application answers; install the mail application or "
            "quoll-compose\n");
}

}  // namespace
}  // namespace quoll::test
