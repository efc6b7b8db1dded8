// The whole road: shared on a private bus, and received by the program that writes drafts.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/integration/private_bus.h"
#include "tests/integration/receiver_home.h"

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
      run({QUOLL_SHARE, "--title", "A title", file, "https://example.org/"}, bus.environment());
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.errors, "");
  wait_for_drafts(bus);  // the share ends when its files are taken
  const auto drafts = drafts_of(bus);
  ASSERT_EQ(drafts.size(), 1U);
  const std::string draft = read_file(drafts[0]);
  EXPECT_NE(draft.find("Subject: A title"), std::string::npos);
  EXPECT_NE(draft.find("report.txt"), std::string::npos);
  EXPECT_NE(draft.find("https://example.org/"), std::string::npos);
}

TEST(ShareByBus, NobodyToReceive) {
  const PrivateBus bus;
  const Ended ended = run({QUOLL_SHARE, "https://example.org/"}, bus.environment());
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "not opened: no application answers to it.vorlent.quoll2; install the mail "
            "application or quoll-compose\n");
}

}  // namespace
}  // namespace quoll::test
