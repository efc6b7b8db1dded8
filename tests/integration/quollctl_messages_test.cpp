#include <gtest/gtest.h>

#include "tests/integration/private_bus.h"
#include "tests/support/temporary_folder.h"

/// The commands of quollctl that work on messages in files.
namespace quoll {
namespace {

using test::Ended;

constexpr const char* kMessage =
    R"({"$ExtensionMessage": {"account": "a@b", "messageId": "7", "folderStandardId": 2, )"
    R"("htmlBody": null, "plainBody": "see http://example.org/\nx"}})";
constexpr const char* kRendered = "see <a href='http://example.org/'>http://example.org/</a><br>x";

class QuollctlMessagesTest : public ::testing::Test {
 protected:
  [[nodiscard]] Ended quollctl(const std::vector<std::string>& arguments,
                               const std::string& input = "") const {
    std::vector<std::string> command{"sh",
                                     "-c",
                                     "input=$1; shift; exec \"$@\" <\"$input\"",
                                     "sh",
                                     folder_.write("input", input),
                                     QUOLLCTL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return test::run(command,
                     {{"QUOLL_GROUP_CONTAINERS", folder_.path()}, {"QUOLL_WORKSPACE", workspace_}});
  }

  test::TemporaryFolder folder_;
  std::string workspace_ = "record";
};

TEST_F(QuollctlMessagesTest, RendersAMessage) {
  const Ended text = quollctl({"render", folder_.write("m.json", kMessage)});
  EXPECT_EQ(text.output, std::string(kRendered) + "\n") << text.errors;
  EXPECT_EQ(text.status, 0);
  const Ended json = quollctl({"render", "--json", "-"}, kMessage);
  EXPECT_EQ(json.output, "{\"html\":\"" + std::string(kRendered) + "\"}\n") << json.errors;
  EXPECT_EQ(json.status, 0);
}

TEST_F(QuollctlMessagesTest, RendersAMessageDictionary) {
  for (const char* form : {"{subject = x; messageId = \"7\";}", R"({"subject": "x"})", "{}"}) {
    const Ended rendered = quollctl({"render", "-"}, form);
    EXPECT_EQ(rendered.output, "\n") << "such a message has no body" << rendered.errors;
    EXPECT_EQ(rendered.status, 0) << form;
  }
}

TEST_F(QuollctlMessagesTest, TakesTheFieldsOfAMessageAsTheyAre) {
  const Ended rendered = quollctl({"render", "-"}, R"({"subject": "x", "plainBody": "a\nb"})");
  EXPECT_EQ(rendered.output, "a<br>b\n") << rendered.errors;
  const Ended unknown = quollctl({"render", "-"}, R"({"plainBodi": "a"})");
  EXPECT_EQ(unknown.status, 1);
  EXPECT_NE(unknown.errors.find("plainBodi"), std::string::npos) << unknown.errors;
}

TEST_F(QuollctlMessagesTest, RefusesWhatIsNoMessage) {
  const struct {
    const char* input;
    const char* words;
  } rows[] = {
      {"", "standard input gives no message: "},
      {"\xFF", "standard input gives no message: "},
      {"[1]", "holds a list instead of a message"},
      {R"({"$url": "http://h/"})", "standard input gives no message: "},
      {R"({"$ExtensionMessage": {"plainBody": 7, "htmlBody": null}})", "an integer"},
      {R"({"$ExtensionMessage": {"attachments": [null]}})", "standard input gives no message: "},
  };
  for (const auto& row : rows) {
    const Ended refused = quollctl({"render", "-"}, row.input);
    EXPECT_EQ(refused.status, 1) << row.input;
    EXPECT_EQ(refused.output, "") << row.input;
    EXPECT_TRUE(refused.errors.starts_with("quollctl: ")) << refused.errors;
    EXPECT_NE(refused.errors.find(row.words), std::string::npos) << refused.errors;
    EXPECT_EQ(refused.errors.find('\n'), refused.errors.size() - 1) << "one line";
  }
  EXPECT_EQ(quollctl({"render", folder_.path("nothing")}).status, 1);
  EXPECT_EQ(quollctl({"render", folder_.path()}).status, 1) << "a folder";
  EXPECT_EQ(quollctl({"render"}).status, 2);
}

TEST_F(QuollctlMessagesTest, LaunchesACommand) {
  const std::string file = folder_.write("m.json", kMessage);
  const Ended opened = quollctl({"launch", "archive", file, file, "--background", "--json"});
  EXPECT_EQ(opened.output, "{\"opened\":true,\"left_out\":[]}\n") << opened.errors;
  EXPECT_EQ(opened.status, 0);
  EXPECT_EQ(opened.errors, "");
  EXPECT_EQ(quollctl({"launch", "archive", file}).output, "") << "no news is good news";
}

TEST_F(QuollctlMessagesTest, TellsWhatItLeftOut) {
  const std::string good = folder_.write("good", kMessage);
  const std::string bad = folder_.write("bad", "{messageId = \"<7>\";}");
  const Ended some = quollctl({"launch", "delete", bad, good, "--json"});
  EXPECT_EQ(some.status, 1);
  EXPECT_EQ(some.output, "{\"opened\":true,\"left_out\":[\"" + bad + "\"]}\n");
  EXPECT_EQ(some.errors,
            "quollctl: " + bad + " is left out: its identifier cannot stand in a URL\n");
  const Ended none = quollctl({"launch", "delete", bad, "--json"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.output, "{\"opened\":false,\"left_out\":[\"" + bad + "\"]}\n");
}

TEST_F(QuollctlMessagesTest, TellsWhatTheApplicationLeftOut) {
  const test::PrivateBus bus;
  const std::string record = bus.path("record");
  test::Process receiver({RECEIVER_DOUBLE, "bus", "it.vorlent.quoll2", "left-out", record},
                         bus.environment());
  ASSERT_EQ(receiver.read_line(), "ready");
  std::ofstream(record + ".left-out")
      << "/drafts/1.eml\na.txt: it is a link\nb.txt: it is a folder";
  const Ended some =
      test::run({QUOLLCTL, "launch", "compose", folder_.write("m.json", kMessage), "--json"},
                bus.environment());
  EXPECT_EQ(some.status, 1);
  EXPECT_EQ(some.output, "{\"opened\":true,\"left_out\":[\"a.txt\",\"b.txt\"]}\n");
  EXPECT_EQ(some.errors,
            "quollctl: a.txt is left out: it is a link\n"
            "quollctl: b.txt is left out: it is a folder\n");
}

TEST_F(QuollctlMessagesTest, LaunchesNothingWhenAFileIsNoMessage) {
  const std::string good = folder_.write("good", kMessage);
  const Ended refused = quollctl({"launch", "delete", good, folder_.path("nothing"), "--json"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.output, "");
  EXPECT_NE(refused.errors.find("gives no message"), std::string::npos) << refused.errors;
}

TEST_F(QuollctlMessagesTest, SaysThatNobodyTookTheCommand) {
  workspace_ = "";
  const Ended failed = quollctl({"launch", "reply", "-"}, kMessage);
  EXPECT_EQ(failed.status, 1);
  EXPECT_TRUE(failed.errors.starts_with("quollctl: not opened: no mail application answers"))
      << failed.errors;
  EXPECT_TRUE(failed.errors.ends_with("; install the mail application or quoll-compose\n"));
  EXPECT_EQ(failed.errors.find('\n'), failed.errors.size() - 1) << "one line";
}

TEST_F(QuollctlMessagesTest, SaysWhyTheApplicationRefuses) {
  const test::PrivateBus bus;
  test::Process receiver({RECEIVER_DOUBLE, "bus", "it.vorlent.quoll2", "refuse", "record"},
                         bus.environment());
  ASSERT_EQ(receiver.read_line(), "ready");
  EXPECT_EQ(
      test::run({QUOLLCTL, "launch", "reply", folder_.write("m.json", kMessage)}, bus.environment())
          .errors,
      "quollctl: not opened: the mail application refuses: the disk is full; quollctl doctor tells "
      "more\n");
}

TEST_F(QuollctlMessagesTest, CallOpensAnyUrl) {
  const test::PrivateBus bus;
  const std::string record = bus.path("record");
  test::Process receiver({RECEIVER_DOUBLE, "bus", "it.vorlent.quoll2", "answer", record},
                         bus.environment());
  ASSERT_EQ(receiver.read_line(), "ready");
  const std::string request =
      R"({"op": "LaunchCommands:background:", "class": "ExtensionUtilities", "args": )"
      R"([[{"$url": "http://h/"}, {"$url": "QUOLL://compose?"}], false]})";
  const Ended called =
      test::run({"sh", "-c", "\"$0\" call <\"$1\"", QUOLLCTL, folder_.write("request", request)},
                bus.environment());
  EXPECT_TRUE(called.output.starts_with(R"({"result":true)")) << called.output;
  EXPECT_EQ(test::read_file(record), "uri http://h/\nuri QUOLL://compose?\n");
}

TEST_F(QuollctlMessagesTest, TakesKnownCommandsOnly) {
  for (const char* word : {"archive", "delete", "reply", "message", "compose", "send", "open"}) {
    EXPECT_EQ(quollctl({"launch", word, "-"}, kMessage).status, 0) << word;
  }
  EXPECT_EQ(quollctl({"launch", "frobnicate", "-"}, kMessage).status, 2);
  EXPECT_EQ(quollctl({"launch", "archive"}).status, 2);
}

}  // namespace
}  // namespace quoll
