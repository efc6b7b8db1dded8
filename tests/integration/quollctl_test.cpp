#include <gtest/gtest.h>

#include <filesystem>

#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

using test::Ended;

class QuollctlTest : public ::testing::Test {
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
                     {{"QUOLL_GROUP_CONTAINERS", folder_.path()}, {"QUOLL_WORKSPACE", "record"}});
  }

  test::TemporaryFolder folder_;
};

TEST_F(QuollctlTest, ShowsWhatACommandUrlSays) {
  const std::string staging = "K7Q2M9XT4B.quoll/SharedData/Share";
  std::filesystem::create_directories(folder_.path(staging + "/folder"));
  const std::string file = folder_.write(staging + "/a b.txt", "12345");
  folder_.write("secret", "123");
  std::filesystem::create_symlink(folder_.path("secret"), folder_.path(staging + "/link"));
  std::filesystem::create_symlink(folder_.path(), folder_.path(staging + "/up"));
  const std::string shared = folder_.path(staging);
  const Ended shown =
      quollctl({"show",
                "quoll://compose?subject=A%20title&to=a%40x%3Bb%40x%3B&htmlBody=%3Cp%3Eone"
                "%0Atwo&attachment_0=" +
                    shared + "/a%20b.txt&attachment_10=/etc/passwd&attachment_9=" + shared +
                    "/gone&attachment_2=" + shared + "/folder&attachment_3=" + shared +
                    "/link&attachment_4=" + shared + "/up/secret&attachment_5=" + shared +
                    "/../../../secret&attachment_6=/nowhere&other=x"});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_EQ(shown.output,
            "command:   compose\n"
            "to:        a@x;b@x;\n"
            "subject:   A title\n"
            "html:      <p>one ...\n"
            "attached:  " +
                file +
                " (5 bytes)\n"
                "attached:  " +
                shared +
                "/folder (a folder)\n"
                "attached:  " +
                shared +
                "/link (not in the staging folder)\n"
                "attached:  " +
                shared +
                "/up/secret (not in the staging folder)\n"
                "attached:  " +
                shared +
                "/../../../secret (not in the staging folder)\n"
                "attached:  /nowhere (not in the staging folder)\n"
                "attached:  " +
                shared +
                "/gone (missing)\n"
                "attached:  /etc/passwd (not in the staging folder)\n"
                "other:     x\n");
}

TEST_F(QuollctlTest, ShowsItAsJson) {
  const Ended shown = quollctl({"show", "--json", "quoll://archive?mail=a&messageid=m"});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_NE(shown.output.find("\"command\":\"archive\""), std::string::npos) << shown.output;
  EXPECT_NE(shown.output.find("\"parameters\":{\"mail\":\"a\",\"messageid\":\"m\"}"),
            std::string::npos)
      << shown.output;
}

TEST_F(QuollctlTest, ShowIsSafeAtATerminal) {
  const Ended shown = quollctl({"show", "quoll://compose?subject=%1B%5B2J%0Ax"});
  EXPECT_EQ(shown.output.find('\x1B'), std::string::npos);
  EXPECT_NE(shown.output.find("subject:   \\x1B[2J\\nx\n"), std::string::npos) << shown.output;
}

TEST_F(QuollctlTest, RefusesWhatIsNoCommandUrl) {
  for (const char* text :
       {"", "http://h/", "quoll:compose", "quoll://", "quoll://?a=b", "not a url",
        "quoll://compose?a=%FF", "quoll://compose#a?b=c", "QUOLL://compose?a=b",
        "quoll://COMPOSE?a=b", "quoll://compose&subject=x", "quoll://other?a=b"}) {
    const Ended refused = quollctl({"show", text});
    EXPECT_EQ(refused.status, 1) << text;
    EXPECT_TRUE(refused.output.empty()) << text;
    EXPECT_TRUE(refused.errors.starts_with("quollctl: ")) << refused.errors;
    EXPECT_EQ(refused.errors.find('\n'), refused.errors.size() - 1) << "one line";
  }
}

TEST_F(QuollctlTest, TakesAUrlApart) {
  const std::string text = "http://u:p@h:8080/a/b;x?q=1&q=2&z&k%0A=%1B#f";
  const Ended shown = quollctl({"url", text});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_EQ(shown.output,
            "scheme:          http\n"
            "host:            h\n"
            "port:            8080\n"
            "user:            u\n"
            "password:        p\n"
            "path:            /a/b\n"
            "parameterString: x\n"
            "query:           q=1&q=2&z&k%0A=%1B\n"
            "fragment:        f\n"
            "  q:             [\"1\",\"2\"]\n"
            "  k\\n:           \\x1B\n");
  EXPECT_EQ(quollctl({"url", "--json", "http://h:8?a=1?b=2"}).output,
            R"({"components":{"scheme":"http","host":"h","port":8,"query":"a=1?b=2"},)"
            R"("parameters":{"a":"1?b"}})"
            "\n");
}

TEST_F(QuollctlTest, TakesAUrlApartWhoseQueryDoesNotDecode) {
  const Ended shown = quollctl({"url", "http://h?a=1&b=%FF"});
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.output,
            "scheme:          http\n"
            "host:            h\n"
            "query:           a=1&b=%FF\n");
  EXPECT_EQ(shown.errors,
            "quollctl: the query is not percent-encoded UTF-8; its parameters are left out\n");
}

TEST_F(QuollctlTest, RefusesWhatIsNoUrl) {
  for (const std::string& text : {std::string(), std::string("a b"), std::string("a#b#c"),
                                  std::string("a\n\xFF"), std::string(100000, '^')}) {
    const Ended refused = quollctl({"url", text});
    EXPECT_EQ(refused.status, 1) << text;
    EXPECT_TRUE(refused.output.empty()) << text;
    EXPECT_TRUE(refused.errors.starts_with("quollctl: ")) << refused.errors;
    EXPECT_EQ(refused.errors.find('\n'), refused.errors.size() - 1) << "one line";
    EXPECT_LT(refused.errors.size(), 1000U) << "a long text is cut";
  }
}

TEST_F(QuollctlTest, CallEndsAsItsWorstReply) {
  const Ended good = quollctl({"call"}, R"({"op": "URLEncodedString", "on": "a b"})");
  EXPECT_EQ(good.output, "{\"result\":\"a%20b\"}\n") << "also without a line feed at the end";
  EXPECT_EQ(good.status, 0);
  const Ended bad = quollctl({"call"},
                             "no JSON\n"
                             R"({"op": "URLQuery", "on": "a#b?c"})"
                             "\n"
                             R"({"constant": "commandCompose"})"
                             "\n");
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.output.find("\"refused\":"), std::string::npos) << bad.output;
  EXPECT_NE(bad.output.find("\"raised\":\"NSRangeException\""), std::string::npos) << bad.output;
  EXPECT_TRUE(bad.output.ends_with("{\"result\":\"compose\"}\n")) << "the run goes on";
  EXPECT_EQ(quollctl({}).status, 2);
  EXPECT_EQ(quollctl({"unknown"}).status, 2);
}

}  // namespace
}  // namespace quoll
