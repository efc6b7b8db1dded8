// The entry of KDE's share menu, talked to as the menu does.
#include "tests/integration/share_menu.h"

#include <sys/file.h>
#include <unistd.h>

#include <set>

#include "tests/integration/mixed_files.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using posix::UniqueFd;

TEST_F(ShareMenu, FilesWithSpacesAndCommas) {
  install_receiver();
  const std::string one = write("a b,c.txt");
  const std::string two = write("100% #1.txt");
  choose();
  request({{"urls", {"file://" + one, "file://" + two}}, {"mimeType", "text/plain"}});
  EXPECT_EQ(last_word(), kEnd);
  EXPECT_EQ(entry_->wait(), 0) << entry_->errors();
  const auto all = drafts();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_NE(all[0].find("a b,c.txt"), std::string::npos);
  EXPECT_NE(all[0].find("100% #1.txt"), std::string::npos);
}

TEST_F(ShareMenu, FilesArriveInTheOrderInWhichTheyWerePicked) {
  const std::string record = bus_.path("record");
  bus_.add_service("it.vorlent.quoll2", RECEIVER_DOUBLE " bus it.vorlent.quoll2 record " + record);
  const auto picked = write_mixed_files(bus_.path(""));
  Json urls = Json::array();
  for (const std::string& path : picked) {
    urls.push_back("file://" + path);
  }
  for (int time = 0; time < order_trials(); ++time) {
    choose();
    request({{"urls", urls}});
    ASSERT_EQ(last_word(), kEnd);
    ASSERT_EQ(recorded_names(record), names_of(picked)) << "time " << time;
  }
}

TEST_F(ShareMenu, APageWithATitle) {
  install_receiver();
  choose();
  request({{"urls", {"https://example.org/x", "marked text"}}, {"title", "The page"}});
  EXPECT_EQ(last_word(), kEnd);
  const auto all = drafts();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_NE(all[0].find("Subject: The page"), std::string::npos);
  EXPECT_NE(all[0].find("https://example.org/x"), std::string::npos);
  EXPECT_NE(all[0].find("marked text"), std::string::npos);
}

TEST_F(ShareMenu, ATextThatOnlyRepeatsTheTitleIsDropped) {
  const std::string record = bus_.path("record");
  bus_.add_service("it.vorlent.quoll2", RECEIVER_DOUBLE " bus it.vorlent.quoll2 record " + record);
  choose();
  request({{"urls", {"https://example.org/x", "The page"}}, {"title", "The page"}});
  EXPECT_EQ(last_word(), kEnd);
  const auto message = message_of(read_file(record).substr(std::string("uri ").size()));
  EXPECT_EQ(message->subject(), foundation::Value("The page"));
  EXPECT_EQ(message->htmlBody(),
            foundation::Value("<a href=\"https://example.org/x\">https://example.org/x</a>"));
}

TEST_F(ShareMenu, WhatWasLeftOutIsSaid) {
  install_receiver();
  choose();
  request({{"urls", {"https://example.org/", "file:///nowhere/a.pdf"}}});
  EXPECT_EQ(last_word(),
            (Json{{"error", 100}, {"errorText", "left out: file:///nowhere/a.pdf: no such file"}}));
  EXPECT_EQ(entry_->wait(), 3);
}

// Or a menu that does not read would keep all other shares waiting.
TEST_F(ShareMenu, NoMoreIsSaidThanTheSocketHolds) {
  choose();
  request({{"urls", std::vector<std::string>(2000, "file:///nowhere/" + std::string(200, 'x'))}});
  const Json said = last_word();
  ASSERT_TRUE(said.contains("errorText"));
  EXPECT_LT(said["errorText"].get<std::string>().size(), 5000U);
  EXPECT_EQ(entry_->wait(), 1);
}

TEST_F(ShareMenu, NobodyToReceive) {
  choose();
  request({{"urls", {"https://example.org/"}}});
  EXPECT_EQ(last_word(),
            (Json{{"error", 100},
                  {"errorText",
                   "not opened: no mail application answers; install the mail application or "
                   "quoll-compose"}}));
  EXPECT_EQ(entry_->wait(), 1);
}

TEST_F(ShareMenu, NoCommandIsAdvisedWhereThereIsNoTerminal) {
  bus_.add_service("it.vorlent.quoll2", "/bin/false");
  choose();
  request({{"urls", {"https://example.org/"}}});
  EXPECT_EQ(last_word(),
            (Json{{"error", 100},
                  {"errorText",
                   "not opened: the mail application could not be started: its program ended at "
                   "once"}}));
}

TEST_F(ShareMenu, RequestsThatAreNone) {
  const std::string requests[] = {"",
                                  "5\n",
                                  "x\nhello",
                                  "-5\nhello",
                                  "5 \nhello",
                                  "268435457\nhello",
                                  "9223372036854775808\nhello",
                                  "99999999999999999999999999",
                                  "5\nhello",
                                  "1000\n\xA1\x64urls",
                                  "\n"};
  for (const std::string& text : requests) {
    choose();
    send(text);
    EXPECT_EQ(shutdown(connection_.get(), SHUT_WR), 0);
    EXPECT_EQ(last_word(),
              (Json{{"error", 100},
                    {"errorText",
                     "not opened: the menu did not say what to share; choose the entry again"}}))
        << text;
    EXPECT_EQ(entry_->wait(), 1) << text;
  }
}

TEST_F(ShareMenu, NothingIsShared) {
  choose();
  request(Json::object());
  EXPECT_EQ(
      last_word(),
      (Json{
          {"error", 100},
          {"errorText",
           "not opened: nothing that was given can be shared; give something that can be read"}}));
}

TEST_F(ShareMenu, AMenuThatIsClosedEndsTheShare) {
  install_receiver();
  const std::string locks = bus_.path("containers/K7Q2M9XT4B.quoll/.locks");
  fs::create_directories(locks);
  const posix::UniqueFd turn(open((locks + "/turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(turn.get(), LOCK_EX), 0);
  choose();
  request({{"urls", {write("kept.txt")}}});
  const std::string incoming = bus_.path("containers/K7Q2M9XT4B.quoll/.incoming");
  std::error_code missing;
  while (!fs::exists(incoming, missing) || fs::is_empty(incoming, missing)) {
    usleep(1000);
  }
  connection_.reset();
  EXPECT_EQ(entry_->wait(), 128 + SIGTERM) << entry_->errors();
  EXPECT_TRUE(fs::is_empty(incoming));
  EXPECT_TRUE(drafts().empty());
}

TEST_F(ShareMenu, AMenuThatSaysNoMoreIsNotClosed) {
  install_receiver();
  choose();
  request({{"urls", {write("kept.txt")}}});
  EXPECT_EQ(shutdown(connection_.get(), SHUT_WR), 0);
  EXPECT_EQ(last_word(), kEnd);
  EXPECT_EQ(drafts().size(), 1U);
}

TEST_F(ShareMenu, TheProgressIsTold) {
  install_receiver();
  Json urls = Json::array();
  for (int number = 0; number < 100; ++number) {
    urls.push_back(write(std::to_string(number)));
  }
  choose();
  request({{"urls", urls}});
  std::string said;
  bool ended = false;
  EXPECT_TRUE(posix::read_until(connection_.get(), said, 1 << 20U, ended));
  EXPECT_NE(said.find(R"({"percent":49})"), std::string::npos) << said;
}

TEST_F(ShareMenu, AMenuThatGoesAwayAtOnce) {
  choose();
  connection_.reset();
  EXPECT_EQ(entry_->wait(), 1);
}

TEST_F(ShareMenu, WithoutAMenuItSaysWhatItIs) {
  const Ended ended = run({QUOLL_SHARE_PURPOSE, "--server", bus_.path("nobody")});
  EXPECT_EQ(ended.status, 2);
  EXPECT_NE(ended.errors.find("quoll-share is for people"), std::string::npos);
  EXPECT_EQ(run({QUOLL_SHARE_PURPOSE}).status, 2);
  EXPECT_EQ(run({QUOLL_SHARE_PURPOSE, "--server", std::string(200, 'a')}).status, 2);
}

std::set<std::string> sockets_of(const fs::path& process) {
  std::set<std::string> sockets;
  std::error_code gone;
  for (const auto& entry : fs::directory_iterator(process / "fd", gone)) {
    const std::string target = fs::read_symlink(entry.path(), gone);
    if (target.starts_with("socket:")) {
      sockets.insert(target);
    }
  }
  return sockets;
}

std::set<std::string> children_of(pid_t process) {
  const std::string path =
      "/proc/" + std::to_string(process) + "/task/" + std::to_string(process) + "/children";
  std::ifstream file(path);
  return {std::istream_iterator<std::string>(file), std::istream_iterator<std::string>()};
}

// The menu's program would wait for whoever has the socket too.
TEST_F(ShareMenu, NoOtherProcessHoldsTheSocket) {
  install_receiver();
  const std::string locks = bus_.path("containers/K7Q2M9XT4B.quoll/.locks");
  fs::create_directories(locks);
  const posix::UniqueFd turn(open((locks + "/turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(turn.get(), LOCK_EX), 0);  // so the entry waits, with its launcher beside it
  choose();
  request({{"urls", {"https://example.org/"}}});
  std::set<std::string> children;
  std::set<std::string> of_children;
  while (of_children.empty()) {  // the launcher has one to the entry and one to the bus
    children = children_of(entry_->id());
    for (const std::string& child : children) {
      of_children = sockets_of("/proc/" + child);
    }
  }
  // It lets go of what it was forked with a moment after the start.
  std::string shared = "not looked at";
  while (!shared.empty() && entry_->id() > 0) {
    shared.clear();
    const auto own = sockets_of("/proc/" + std::to_string(entry_->id()));
    for (const std::string& child : children) {
      for (const std::string& socket : sockets_of("/proc/" + child)) {
        shared += own.contains(socket) ? socket : "";
      }
    }
  }
  EXPECT_EQ(shared, "");
  ASSERT_EQ(flock(turn.get(), LOCK_UN), 0);
  EXPECT_EQ(last_word(), kEnd);
}

}  // namespace
}  // namespace quoll::test
