#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "apps/console/operations/session.h"
#include "quoll/linux/posix/steady_clock.h"
#include "tests/support/recorders.h"

/// How described share requests are answered: when providers answer, how long it takes, and whose
/// events are whose.
namespace quoll::console {

namespace {

std::string gathering(const std::string& attachments) {
  return R"({"op":"GetItemForExtension:service:completion:","class":"ExtensionUtilities",)"
         R"("args":[{"$context":{"inputItems":[{"title":"Title","attachments":[)" +
         attachments + R"(]}]}},"Share"]})";
}

class Gathering : public testing::Test {
 protected:
  std::shared_ptr<test::ThreadQueue> queue_ = std::make_shared<test::ThreadQueue>();
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
};

TEST_F(Gathering, TellsTheTimeToTheCompletion) {
  Session session({.log = log_, .queue = queue_, .clock = posix::make_clock()});
  const Json reply = parse_json(session.reply(
      gathering(R"({"type":"public.url","item":{"$url":"http://h/"},"after":0.25})")));
  // Two sleeps end before the answer; the third finds it.
  EXPECT_GE(reply["seconds"].get<double>(), 0.25);
  EXPECT_EQ(reply["result"]["$ExtensionMessage"]["subject"], "Title");
}

TEST_F(Gathering, KeepsLateEventsOutOfLaterReplies) {
  Session session({.log = log_, .queue = queue_, .clock = std::make_shared<test::HeldClock>()});
  const Json first =
      parse_json(session.reply(gathering(R"({"type":"public.url","error":"late","after":1})")));
  EXPECT_FALSE(first.contains("events"));
  while (log_->lines().empty()) {
    EXPECT_EQ(session.reply(R"({"constant":"commandOpen"})"), R"({"result":"open"})");
    std::this_thread::yield();
  }
  EXPECT_EQ(log_->lines()[0],
            "GetItemForExtension kUTTypeURL Error Domain=NSCocoaErrorDomain Code=256 \"late\"");
}

TEST_F(Gathering, RefusesWhenNoCompletionComes) {
  Session session({.log = log_});  // no queue: a block is never run
  EXPECT_EQ(session.reply(gathering("")), R"({"refused":"the completion was never called"})");
}

TEST_F(Gathering, EndsWithAnswersStillToCome) {
  Session session({.log = log_, .queue = queue_, .clock = std::make_shared<test::HeldClock>()});
  const Json reply = parse_json(session.reply(
      gathering(R"({"type":"public.url","item":{"$url":"http://h/"},"after":3600})")));
  EXPECT_TRUE(reply["result"]["$ExtensionMessage"]["subject"].is_null());
}

TEST_F(Gathering, AnswersAsOftenAsDescribed) {
  Session session({.log = log_, .queue = queue_, .clock = posix::make_clock()});
  const Json reply = parse_json(
      session.reply(gathering(R"({"type":"public.url","item":{"$url":"http://h/"}},)"
                              R"({"type":"public.url","item":{"$url":"http://h/"},"times":0},)"
                              R"({"type":"public.url","item":{"$url":"http://h/"},"times":2})")));
  const std::string link = R"(<a href="http://h/">http://h/</a>)";
  EXPECT_EQ(reply["result"]["$ExtensionMessage"]["htmlBody"], link + link + link);
}

}  // namespace

}  // namespace quoll::console
