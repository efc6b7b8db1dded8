#include "apps/console/operations/session.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recorders.h"

namespace quoll::console {

namespace {

Json reply_to(std::string_view line) {
  Session session({});
  return parse_json(session.reply(line));
}

TEST(Session, RefusesWhatIsNoRequest) {
  const struct {
    std::string line;
    std::string refusal;
    std::string reason;
  } kRows[] = {
      {"", "not JSON", "an empty line"},
      {"nonsense", "not JSON", "no JSON"},
      {"{\"op\":\"URLQuery\",\"on\":\"a\"} {}", "not JSON", "two values"},
      {"{\"op\":\"URLQuery\",\"on\":\"\xFF\"}", "not UTF-8", "a byte that is no UTF-8"},
      {R"({"op":"URLQuery","on":"\ud800"})", "not JSON", "half of a surrogate pair"},
      {R"({"op":"description","on":1e999})", "out of range", "no real is that large"},
      {"[]", "not an object", "an array"},
      {"{}", "either op or constant", "nothing asked"},
      {R"({"op":"URLQuery"})", "either class or on", "no receiver"},
      {R"({"op":"URLQuery","on":"a","class":"NSString"})", "either class or on", "both"},
      {R"({"op":"URLQuery","on":"a","extra":1})", "extra", "an unknown key"},
      {R"({"op":1,"on":"a"})", "op is not a text", "a name that is a number"},
      {R"({"op":"URLQuery","on":"a","args":{}})", "args", "arguments that are no array"},
      {R"({"op":"URLQuery","on":"a","args":[1]})", "takes 0 arguments, not 1", "too many"},
      {R"({"op":"URLDecodedString:","on":"a"})", "takes 1 arguments, not 0", "too few"},
      {R"({"op":"nothing","on":"a"})", "no operation nothing", "an unknown operation"},
      {R"({"op":"GroupPath","on":"a"})", "no operation GroupPath", "a class operation"},
      {R"({"op":"URLQuery","class":"NSString"})", "no operation URLQuery of class NSString",
       "an instance operation"},
      {R"({"op":"new","class":"NSString"})", "no operation new of class NSString", "another class"},
      {R"({"constant":"none"})", "no constant none", "an unknown constant"},
      {R"({"constant":"commandOpen","args":[]})", "has nothing else", "a constant with more"},
      {R"({"op":"description","on":{"$nothing":1}})", "$nothing is not known", "an unknown form"},
      {R"({"op":"description","on":{"$url":"x","y":1}})", "$url", "a form with another key"},
      {R"({"op":"description","on":{"$self":null}})", "$self", "no receiver yet"},
      {R"({"op":"description","on":{"$data":"?"}})", "not Base64", "bytes that are none"},
      {R"({"op":"description","on":{"$date":"now"}})", "$date", "a date that is a text"},
      {R"({"op":"description","on":{"$ExtensionAddress":{"x":1}}})", "no field x",
       "an unknown field"},
  };
  for (const auto& row : kRows) {
    const Json reply = reply_to(row.line);
    ASSERT_TRUE(reply.contains("refused")) << row.reason << ": " << json_line(reply);
    EXPECT_NE(reply["refused"].get<std::string>().find(row.refusal), std::string::npos)
        << row.reason << ": " << json_line(reply);
    EXPECT_EQ(reply.size(), 1U) << row.reason;
  }
}

TEST(Session, GoesOnAfterARefusedLineAndRemembersIt) {
  Session session({});
  EXPECT_EQ(session.reply(R"({"constant":"commandOpen"})"), R"({"result":"open"})");
  EXPECT_TRUE(session.all_answered());
  static_cast<void>(session.reply("?"));
  EXPECT_EQ(session.reply(R"({"constant":"commandOpen"})"), R"({"result":"open"})");
  EXPECT_FALSE(session.all_answered());
}

TEST(Session, RefusesNestingWithoutEnd) {
  const std::string deep(1'000'000, '[');
  EXPECT_TRUE(reply_to(deep).contains("refused"));
  const std::string closed =
      R"({"op":"description","on":)" + std::string(400, '[') + std::string(400, ']') + "}";
  EXPECT_TRUE(reply_to(closed).contains("result"));
}

TEST(Session, RefusesAnAnswerThatContainsItself) {
  const Json reply =
      reply_to(R"({"op":"setTo:","on":{"$ExtensionMessage":{}},"args":[[{"$self":null}]]})");
  EXPECT_EQ(reply, Json({{"refused", "the answer contains itself"}}));
}

TEST(Session, KeepsTheOrderOfKeysHoweverMany) {
  constexpr int kMany = 20'000;
  std::string parameters;
  std::string query;
  for (int i = 0; i < kMany; ++i) {
    const std::string number = std::to_string(i);
    parameters += (i == 0 ? "" : ",") + ("\"k" + number) + "\":\"\"";
    query += (i == 0 ? "" : "&") + ("k" + number) + "=";
  }
  const Json composed = reply_to(R"({"op":"URLQueryWithParameters:","class":"NSString","args":[{)" +
                                 parameters + "}]}");
  EXPECT_EQ(composed["result"], query);
  const Json parsed = reply_to(R"({"op":"URLQueryParameters","on":")" + query + "\"}");
  EXPECT_EQ(json_line(parsed["result"]), "{" + parameters + "}");
}

TEST(Session, AnswersALongLine) {
  const std::string text(20'000'000, 'a');
  Session session({});
  EXPECT_EQ(session.reply(R"({"op":"URLEncodedString","on":")" + text + "\"}"),
            R"({"result":")" + text + "\"}");
}

TEST(Session, LaunchesNowhereWithoutAWorkspace) {
  const Json reply = reply_to(R"({"op":"LaunchCommands:background:","class":"ExtensionUtilities",)"
                              R"("args":[[{"$url":"quoll://open?"}],true]})");
  EXPECT_EQ(reply, Json::parse(R"({"result":false,"events":[{"opened":["quoll://open?"],)"
                               R"("application":"it.vorlent.quoll","options":512}]})"));
}

TEST(Session, PassesOnWhatItTells) {
  const auto log = std::make_shared<test::RecordingLog>();
  const auto workspace = std::make_shared<test::RecordingWorkspace>();
  Session session({.workspace = workspace, .log = log});
  static_cast<void>(
      session.reply(R"({"op":"LaunchCommands:background:","class":"ExtensionUtilities",)"
                    R"("args":[[{"$url":"quoll://open?"}],false]})"));
  static_cast<void>(
      session.reply(R"({"op":"ShareInit:","class":"ExtensionUtilities","args":["Share"]})"));
  ASSERT_EQ(workspace->opened().size(), 1U);
  EXPECT_EQ(workspace->opened()[0].options, 131072U);
  ASSERT_EQ(log->lines().size(), 1U);
  EXPECT_TRUE(log->lines()[0].starts_with("shareInit Error Domain="));
}

}  // namespace

}  // namespace quoll::console
