// The entry of browsers, talked to as a browser does.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "quoll/foundation/base64.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/integration/private_bus.h"
#include "tests/integration/receiver_home.h"

namespace quoll::test {
namespace {

using Json = nlohmann::json;
using posix::UniqueFd;

std::string frame_of(const std::string& json) {
  const auto length = static_cast<std::uint32_t>(json.size());
  std::string frame(sizeof length, '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  return frame + json;
}

class ShareBrowser : public testing::Test {
 protected:
  ShareBrowser() { EXPECT_EQ(mkfifo(input_path().c_str(), 0600), 0); }

  [[nodiscard]] std::string input_path() const { return bus_.path("input"); }
  void install_receiver() const {
    bus_.add_service("it.vorlent.quoll2", std::string(QUOLL_COMPOSE) + " --service");
  }

  /// Starts it as Firefox does and opens the way to it.
  void start(Environment environment = {}) {
    environment.merge(Environment(bus_.environment()));
    entry_ = std::make_unique<Process>(
        std::vector<std::string>{"sh", "-c",
                                 "exec \"$0\" manifest share@quoll2.vorlent.it <" + input_path(),
                                 QUOLL_SHARE_BROWSER},
        environment);
    input_ = UniqueFd(open(input_path().c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_TRUE(input_);
  }
  void say(const Json& frame) const {
    EXPECT_TRUE(posix::write_all(input_.get(), frame_of(frame.dump())));
  }
  void send(const std::string& bytes) const { EXPECT_TRUE(posix::write_all(input_.get(), bytes)); }
  /// What it says until its end.
  std::vector<Json> hear() {
    std::vector<Json> heard;
    const std::string said = entry_->read_output();
    for (std::size_t at = 0; at + sizeof(std::uint32_t) <= said.size();) {
      std::uint32_t length = 0;
      std::memcpy(&length, said.data() + at, sizeof length);
      EXPECT_LT(length, 1U << 20U);
      heard.push_back(Json::parse(said.substr(at + sizeof length, length), nullptr, false));
      at += sizeof length + length;
    }
    return heard;
  }
  Json last_word() {
    const auto heard = hear();
    return heard.empty() ? Json() : heard.back();
  }
  [[nodiscard]] std::vector<std::string> drafts() const {
    wait_for_drafts(bus_);
    std::vector<std::string> texts;
    std::error_code missing;
    for (const auto& entry :
         std::filesystem::directory_iterator(bus_.data_home() + "/quoll-compose/drafts", missing)) {
      texts.push_back(read_file(entry.path()));
    }
    return texts;
  }

  PrivateBus bus_;
  UniqueFd input_;
  std::unique_ptr<Process> entry_;
};

const Json kWell = {{"end", {{"opened", true}, {"title", ""}, {"body", ""}}}};

TEST_F(ShareBrowser, APage) {
  install_receiver();
  start();
  say({{"version", 1}});
  say({{"title", "The page"}});
  say({{"link", "https://example.org/?a=1&b=2"}});
  say({{"end", true}});
  EXPECT_EQ(last_word(), kWell);
  EXPECT_EQ(entry_->wait(), 0);
  const auto all = drafts();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_NE(all[0].find("Subject: The page"), std::string::npos);
  EXPECT_NE(all[0].find("https://example.org/?a=3D1"), std::string::npos);
}

TEST_F(ShareBrowser, StyledTextAndAPicture) {
  install_receiver();
  start({{"QUOLL_IMAGE_HELPER", QUOLL_IMAGE_HELPER}});
  const std::string whole("GIF89a\1\0\1\0\x80\0\0\xff\0\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0;", 35);
  say({{"version", 1}, {"html", "a <b>bold</b> word"}});
  say({{"picture", foundation::base64_encode(whole)}});
  say({{"end", true}});
  EXPECT_EQ(last_word(), kWell);
  EXPECT_EQ(entry_->wait(), 0);
  const auto all = drafts();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_NE(all[0].find("image.png"), std::string::npos);
  EXPECT_NE(all[0].find("<b>bold</b>"), std::string::npos);
}

TEST_F(ShareBrowser, WhatHasNoAddressIsSaid) {
  install_receiver();
  start();
  say({{"version", 1}, {"title", "New Tab"}, {"missing", "address"}, {"end", true}});
  const Json end = last_word()["end"];
  EXPECT_EQ(end["opened"], false);
  EXPECT_TRUE(end["body"].get<std::string>().starts_with(
      "Left out: what was chosen: it has no address that others can open"))
      << end;
  EXPECT_EQ(entry_->wait(), 1);
  EXPECT_TRUE(drafts().empty());
}

TEST_F(ShareBrowser, TheProgressIsTold) {
  install_receiver();
  start();
  say({{"version", 1}, {"link", "https://example.org/"}, {"end", true}});
  const auto heard = hear();
  ASSERT_GT(heard.size(), 1U);
  EXPECT_TRUE(heard.front().contains("progress")) << heard.front();
}

TEST_F(ShareBrowser, NoFileIsAttached) {
  install_receiver();
  std::ofstream(bus_.path("secret")) << "secret";
  start();
  say({{"version", 1}, {"link", "file://" + bus_.path("secret")}});
  say({{"link", bus_.path("secret")}});
  say({{"link", "https://example.org/"}});
  say({{"end", true}});
  EXPECT_EQ(last_word(),
            (Json{{"end",
                   {{"opened", true},
                    {"title", "Not everything is in the draft"},
                    {"body", "Left out: file://" + bus_.path("secret") +
                                 ": it is no link to the net\nLeft out: " + bus_.path("secret") +
                                 ": it is no link to the net"}}}}));
  EXPECT_EQ(entry_->wait(), 3);
  const auto all = drafts();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].find("secret"), std::string::npos);
}

// A link is never looked for on the disk, also where a file has its name.
TEST_F(ShareBrowser, ALinkIsNoPath) {
  install_receiver();
  std::filesystem::create_directories(bus_.path("https:/example.org"));
  std::ofstream(bus_.path("https:/example.org/secret")) << "secret content";
  ASSERT_EQ(chdir(bus_.path("").c_str()), 0);
  start();
  ASSERT_EQ(chdir("/"), 0);
  say({{"version", 1}, {"link", "https://example.org/secret"}, {"end", true}});
  EXPECT_EQ(last_word(), kWell);
  const auto all = drafts();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].find("filename"), std::string::npos);
}

TEST_F(ShareBrowser, WhatIsNoRequest) {
  install_receiver();
  const std::string deep =
      "{\"version\":" + std::string(10'000, '[') + std::string(10'000, ']') + "}";
  for (const std::string& bytes :
       {std::string("\xff\xff\xff\xff{}"), std::string("\x01"), std::string("\5\0\0\0{}", 6),
        frame_of(deep), frame_of("{}"), frame_of("")}) {
    start();
    send(bytes);
    input_.reset();
    EXPECT_EQ(last_word()["end"]["body"],
              "The browser did not say what to share; try it once more");
    EXPECT_EQ(entry_->wait(), 1);
  }
  EXPECT_TRUE(drafts().empty());
}

TEST_F(ShareBrowser, ABrowserThatGoesAwayBeforeTheEndSharesNothing) {
  install_receiver();
  start();
  say({{"version", 1}, {"link", "https://example.org/"}});
  input_.reset();
  EXPECT_EQ(last_word()["end"]["opened"], false);
  EXPECT_EQ(entry_->wait(), 1);
  EXPECT_TRUE(drafts().empty());
}

TEST_F(ShareBrowser, AnotherVersionIsSaid) {
  start();
  say({{"version", 2}});
  EXPECT_EQ(last_word()["end"]["body"],
            "The browser's extension has another version than this program; update both, and start "
            "the browser anew");
}

TEST_F(ShareBrowser, TheShareGoesOnWhenTheBrowserEndsTheProgram) {
  install_receiver();
  start();
  say({{"version", 1}, {"link", "https://example.org/"}});
  while (!std::filesystem::exists("/proc/" + std::to_string(entry_->id()) + "/task") ||
         read_file("/proc/" + std::to_string(entry_->id()) + "/task/" +
                   std::to_string(entry_->id()) + "/children")
             .empty()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  ASSERT_EQ(kill(entry_->id(), SIGKILL), 0);
  entry_->wait();
  say({{"end", true}});
  input_.reset();
  const auto late = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (drafts().empty() && std::chrono::steady_clock::now() < late) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(drafts().size(), 1U);
}

TEST_F(ShareBrowser, NothingGoesIntoTheBrowsersLog) {
  start();
  say({{"version", 1}, {"title", "private"}, {"link", "https://private.example/"}, {"end", true}});
  EXPECT_EQ(last_word()["end"]["opened"], false);
  entry_->wait();
  EXPECT_EQ(entry_->errors(), "");
}

TEST_F(ShareBrowser, PeopleAreToldToUseAnother) {
  const Ended ended = run({QUOLL_SHARE_BROWSER}, {});
  EXPECT_EQ(ended.status, 2);
  EXPECT_EQ(ended.errors,
            "quoll-share-browser: browsers start this program; quoll-share is for people\n");
}

}  // namespace
}  // namespace quoll::test
