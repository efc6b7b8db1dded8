// What a share says of itself: in the system log, at a terminal, and to a program.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/private_bus.h"
#include "tests/integration/receiver_home.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

using nlohmann::json;

constexpr const char* kReceiver = "it.vorlent.quoll2";

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// Its time is another each time.
std::string without_time(const std::string& line) {
  return std::regex_replace(line, std::regex("after [0-9]+ ms"), "after N ms");
}

class ShareLog : public testing::Test {
 protected:
  ShareLog() {
    EXPECT_EQ(home_.print({"https://first/"}).status, 0) << "it logs that it makes the folder";
    home_.environment()["LD_PRELOAD"] = QUOLL_KEPT_LOG;
    home_.environment()["QUOLL_KEPT_LOG"] = home_.path("log");
  }
  void SetUp() override {
    if (sandbox::kSanitizerBuild) {
      GTEST_SKIP() << "a sanitizer wants to be loaded first";
    }
  }
  [[nodiscard]] std::vector<std::string> log() const {
    return lines_of(read_file(home_.path("log")));
  }

  ShareHome home_;
};

TEST_F(ShareLog, OneLineTellsOfAShareWithoutNames) {
  const Ended ended =
      home_.print({"--title", "secret-title", "https://secret.example/",
                   home_.write("secret-name.txt", "ten bytes."), home_.write("secret", "12345"),
                   "/nowhere/secret", "/nowhere/secret-too", "/dev/null"});
  EXPECT_EQ(ended.status, 3) << ended.errors;
  ASSERT_EQ(log().size(), 1U);
  EXPECT_EQ(without_time(log().front()),
            "share given to standard output after N ms: 2 files (15 bytes), 1 link; left out: "
            "1: it is a device, 2: no such file");
}

TEST_F(ShareLog, AShareThatFailsHasALineToo) {
  EXPECT_EQ(home_.print({"/nowhere"}).status, 1);
  home_.environment()["QUOLL_GROUP_CONTAINERS"] = home_.path("bad\xFF");
  EXPECT_EQ(home_.print({"--text", "secret"}).status, 1);
  ASSERT_EQ(log().size(), 2U);
  EXPECT_EQ(without_time(log()[0]),
            "share not given to standard output after N ms: nothing; left out: 1: no such file; "
            "nothing that was given can be shared");
  EXPECT_TRUE(without_time(log()[1]).starts_with(
      "share not given to anybody after N ms: nothing; the shared folder "
      "cannot be used: its path is not UTF-8: "))
      << log()[1];
}

TEST_F(ShareLog, WordsOfTheApplicationStayOutOfIt) {
  const PrivateBus bus;
  const std::string record = bus.path("record");
  std::ofstream(record + ".left-out") << "/drafts/1.eml\nsecret.txt: the secret is a link\n";
  bus.add_service(kReceiver, RECEIVER_DOUBLE " bus it.vorlent.quoll2 left-out " + record);
  Environment environment = bus.environment();
  environment["LD_PRELOAD"] = QUOLL_KEPT_LOG;
  environment["QUOLL_KEPT_LOG"] = home_.path("log");
  EXPECT_EQ(run({QUOLL_SHARE, "--text", "words"}, environment).status, 3);
  EXPECT_EQ(without_time(log().back()),
            "share given to it.vorlent.quoll2 after N ms: 1 text (5 bytes); left out: 1: the "
            "application says why");
}

TEST_F(ShareLog, WhyTheApplicationRefusesStaysOutOfIt) {
  const PrivateBus bus;
  bus.add_service(kReceiver, RECEIVER_DOUBLE " bus it.vorlent.quoll2 refuse " + bus.path("record"));
  Environment environment = bus.environment();
  environment["LD_PRELOAD"] = QUOLL_KEPT_LOG;
  environment["QUOLL_KEPT_LOG"] = home_.path("log");
  const Ended ended = run({QUOLL_SHARE, "--text", "words"}, environment);
  EXPECT_EQ(ended.errors,
            "not opened: the mail application refuses: the disk is full; quollctl doctor tells "
            "more\n");
  const std::string logged = read_file(home_.path("log"));
  EXPECT_NE(logged.find("openURLs the mail application refuses\n"), std::string::npos) << logged;
  EXPECT_EQ(logged.find("the disk is full"), std::string::npos) << logged;
}

TEST_F(ShareLog, WordsOfTheClipboardsProgramStayOutOfIt) {
  std::ofstream(home_.path("xclip")) << "#!/bin/sh\necho 'no secret.txt' >&2\nexit 1\n";
  std::filesystem::permissions(home_.path("xclip"), std::filesystem::perms::owner_all);
  home_.environment()["PATH"] = home_.path("");
  home_.environment()["DISPLAY"] = ":99999";
  home_.environment()["WAYLAND_DISPLAY"] = std::nullopt;
  EXPECT_EQ(home_.print({"--clipboard"}).errors,
            "not opened: the clipboard: xclip says: no secret.txt; copy it again, or share the "
            "file\n");
  EXPECT_EQ(without_time(log().back()),
            "share not given to anybody after N ms: nothing; the clipboard: xclip failed");
}

TEST(ShareSteps, EachHasALineWithItsTime) {
  const ShareHome home;
  EXPECT_EQ(home.print({"https://first/"}).status, 0) << "it logs that it makes the folder";
  const Ended ended = home.print({"--verbose", home.write("a.txt", "x")});
  EXPECT_EQ(ended.status, 0);
  const std::vector<std::string> steps{
      "the shared folder is ",           "what was given is read: 1 item, 0 left out",
      "the program has confined itself", "the files are prepared",
      "it is this share's turn",         "all is ready and goes to it.vorlent.quoll2",
      "it.vorlent.quoll2 has taken it",  "share given to standard output after "};
  const auto lines = lines_of(ended.errors);
  ASSERT_EQ(lines.size(), steps.size()) << ended.errors;
  double before = 0;
  for (std::size_t at = 0; at < steps.size(); ++at) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(lines[at], parts, std::regex(R"(\[ *([0-9]+\.[0-9]{3})\] (.*))")))
        << lines[at];
    EXPECT_TRUE(parts[2].str().starts_with(steps[at])) << lines[at];
    EXPECT_GE(std::stod(parts[1]), before);
    before = std::stod(parts[1]);
  }
}

/// A bus with the receiver that writes drafts.
class ShareTold : public testing::Test {
 protected:
  ShareTold() { bus_.add_service(kReceiver, std::string(QUOLL_COMPOSE) + " --service"); }
  [[nodiscard]] std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(bus_.path(name)) << content;
    return bus_.path(name);
  }
  /// What is left to be read there: how far a share is that takes long has been wiped away.
  [[nodiscard]] std::string at_terminal(const std::string& arguments) const {
    constexpr std::string_view kWiped = "\r\033[K";
    const std::string all =
        run({"script", "-qefc", QUOLL_SHARE " " + arguments, "/dev/null"}, bus_.environment())
            .output;
    const std::size_t at = all.rfind(kWiped);
    return at == std::string::npos ? all : all.substr(at + kWiped.size());
  }

  PrivateBus bus_;
};

TEST_F(ShareTold, AProgramGetsOneObject) {
  const std::string file = write("a.txt", "12345");
  const Ended ended = run({QUOLL_SHARE, "--json", "--title", "T", "https://h/", file, "/nowhere"},
                          bus_.environment());
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: /nowhere: no such file\n");
  json told = json::parse(ended.output);
  wait_for_drafts(bus_);
  EXPECT_TRUE(std::filesystem::exists(told["draft"].get<std::string>())) << told;
  EXPECT_TRUE(told["milliseconds"].is_number_unsigned() ||
              told["milliseconds"].is_number_integer());
  told.erase("draft");
  told.erase("milliseconds");
  const json expected = {{"opened", true},
                         {"state", "taken"},
                         {"application", kReceiver},
                         {"shared",
                          {{{"kind", "link"}, {"given", "https://h/"}, {"bytes", 0}},
                           {{"kind", "file"}, {"given", file}, {"bytes", 5}}}},
                         {"leftOut", {{{"given", "/nowhere"}, {"reason", "no such file"}}}},
                         {"folderTrouble", nullptr},
                         {"reason", nullptr}};
  EXPECT_EQ(told, expected);
}

TEST_F(ShareTold, AProgramIsToldOfAFailureToo) {
  const PrivateBus nobody;
  const Ended ended = run({QUOLL_SHARE, "--json", "--text", "x"}, nobody.environment());
  EXPECT_EQ(ended.status, 1);
  const json told = json::parse(ended.output);
  EXPECT_EQ(told["opened"], false);
  EXPECT_EQ(told["state"], "not taken");
  EXPECT_EQ(told["draft"], nullptr);
  EXPECT_EQ(ended.errors, "not opened: " + told["reason"].get<std::string>() + "\n");
  EXPECT_EQ(run({QUOLL_SHARE, "--json", "--print", "https://h/"}).status, 2);
}

TEST_F(ShareTold, SomebodyAtATerminalLearnsWhereTheDraftWillBe) {
  const std::string told = at_terminal("https://h/");
  wait_for_drafts(bus_);
  const std::string folder = bus_.data_home() + "/quoll-compose/drafts";
  const std::string draft = std::filesystem::directory_iterator(folder)->path();
  EXPECT_EQ(told, "the mail application has taken it; the draft will be " + draft + "\r\n");
  EXPECT_EQ(run({QUOLL_SHARE, "https://h/"}, bus_.environment()).errors, "")
      << "nobody reads it there";
}

TEST_F(ShareTold, SomebodyAtATerminalLearnsThatTheApplicationTakesItsTime) {
  bus_.add_service(kReceiver, RECEIVER_DOUBLE " bus it.vorlent.quoll2 hang " + bus_.path("record"));
  Process share({"script", "-qefc", QUOLL_SHARE " https://h/", "/dev/null"}, bus_.environment());
  const std::string told = share.read_line();
  EXPECT_TRUE(told.ends_with("\r\033[Kwaiting for the mail application (it has 20 s)\r")) << told;
}

TEST_F(ShareTold, AnApplicationThatDoesNotSayWhereHasTakenIt) {
  bus_.add_service(kReceiver, RECEIVER_DOUBLE " bus it.vorlent.quoll2 take " + bus_.path("record"));
  EXPECT_EQ(at_terminal("--title T https://h/"), "the mail application has taken it\r\n");
}

}  // namespace
}  // namespace quoll::test
