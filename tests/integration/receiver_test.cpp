// The receiver at the command line: what it takes, what it leaves out, what it writes.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "tests/integration/receiver_home.h"

namespace quoll::test {
namespace {

std::string hex(const std::string& bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += {kDigits[byte >> 4U], kDigits[byte & 0xFU]};
  }
  return text;
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class ReceiverTest : public testing::Test {
 protected:
  ReceiverHome home_;
};

TEST_F(ReceiverTest, ADraftHoldsWhatTheCommandSays) {
  const std::string first = home_.stage("a.txt", "first\n");
  const std::string second = home_.stage("b.bin", std::string("\0\xff\r\n", 4));
  const auto ended = home_.compose({ReceiverHome::url(
      {first, second},
      "subject=S%C3%BCbject%20%E2%9C%93&htmlBody=%3Cp%3EA%20%3Cb%3Eb%3C%2Fb%3E%3C%2Fp%3E"
      "&to=a%40x.org%3BAnn%20B%20%3Cb%40x.org%3E%3B&cc=c%40x.org%3B&bcc=d%40x.org%3B"
      "&from=me%40x.org")});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(home_.read_only_draft(),
            "header X-Unsent \"1\"\n"
            "header Subject \"S\\u00fcbject \\u2713\"\n"
            "header From \"me@x.org\"\n"
            "header To \"a@x.org, Ann B <b@x.org>\"\n"
            "header Cc \"c@x.org\"\n"
            "header Bcc \"d@x.org\"\n"
            "header MIME-Version \"1.0\"\n"
            "multipart multipart/mixed\n"
            "multipart multipart/alternative\n"
            "text text/plain \"A b\\n\"\n"
            "text text/html \"<!DOCTYPE html>\\n<html>\\n<head>\\n<meta charset=\\\"utf-8\\\">"
            "\\n</head>\\n<body>\\n<p>A <b>b</b></p>\\n</body>\\n</html>\\n\"\n"
            "attachment text/plain \"a.txt\" " +
                hex("first\n") +
                "\n"
                "attachment application/octet-stream \"b.bin\" 00ff0d0a\n");
}

TEST_F(ReceiverTest, AnEmptyCommandIsAnEmptyDraft) {
  EXPECT_EQ(home_.compose({"quoll://compose?"}).status, 0);
  EXPECT_EQ(home_.read_only_draft(),
            "header X-Unsent \"1\"\nheader Subject \"\"\nheader MIME-Version \"1.0\"\n"
            "text text/plain \"\"\n");
}

TEST_F(ReceiverTest, ThePlainTextGivenIsThePlainTextKept) {
  EXPECT_EQ(home_.compose({"quoll://compose?plainBody=From%20me%0D%0A.%0D%0Aend%20"}).status, 0);
  const auto read = home_.read_only_draft();
  EXPECT_TRUE(holds(read, "text text/plain \"From me\\n.\\nend \"\n")) << read;
}

// What one person reads in one form must be what another reads in the other.
TEST_F(ReceiverTest, BothFormsOfABodyAreMadeOfItsHtml) {
  EXPECT_EQ(
      home_.compose({"quoll://compose?plainBody=SECRET&htmlBody=%3Cp%3EVISIBLE%3C%2Fp%3E"}).status,
      0);
  const auto read = home_.read_only_draft();
  EXPECT_TRUE(holds(read, "text text/plain \"VISIBLE\\n\"\n")) << read;
  EXPECT_FALSE(holds(read, "SECRET")) << read;
}

/// What an independent reader finds in the draft of a command with this HTML.
std::string draft_of_html(const std::string& html) {
  const ReceiverHome home;
  const auto ended = home.compose({"quoll://compose?htmlBody=" + foundation::percent_encode(html)});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  return home.read_only_draft();
}

TEST_F(ReceiverTest, NothingOfAPageIsSentThatIsNotSeen) {
  const auto read = draft_of_html(
      "<p>seen<span style='display:none'>secret1</span><script>secret2</script>"
      "<i hidden>secret3</i><!-- secret4 --></p><p onclick='secret5'>"
      "<img src='http://secret6/'><form action='secret7'><input value=secret8>");
  EXPECT_TRUE(holds(read, "text text/plain \"seen\\n\"\n")) << read;
  EXPECT_TRUE(holds(read, "<p>seen</p>")) << read;
  EXPECT_FALSE(holds(read, "secret")) << read;
}

TEST_F(ReceiverTest, APagesLinksLeadToTheNetOnly) {
  const auto read = draft_of_html(
      "<a href='javascript:a()'>a</a> <a href='data:text/html,b'>b</a> <a href='file:///c'>c</a> "
      "<a href='JAVA&#10;SCRIPT:d()'>d</a> <a href='https://example.org/e'>e</a>");
  EXPECT_TRUE(holds(read, "text text/plain \"a b c d e <https://example.org/e>\\n\"\n")) << read;
  EXPECT_TRUE(holds(read, "a b c d <a href=\\\"https://example.org/e\\\">e</a>")) << read;
}

TEST_F(ReceiverTest, ThePlainTextOfAPageIsReadLikeItsHtml) {
  const auto read = draft_of_html(
      "<p>Gr&uuml;&szlig;e</p><p>again</p><table><tr><td>one</td><td>two</td></tr></table>");
  EXPECT_TRUE(holds(read, "\"Gr\\u00fc\\u00dfe\\n\\nagain\\n\\none\\ttwo\\n\"")) << read;
}

TEST_F(ReceiverTest, NoFieldCanAddAHeader) {
  EXPECT_EQ(home_
                .compose({"quoll://compose?subject=a%0D%0AX-Evil:%201&to=b%40x%0D%0ABcc:%20e%40x%3B"
                          "&from=f%40x%0AX-Evil:%202"})
                .status,
            0);
  const auto read = home_.read_only_draft();
  EXPECT_FALSE(holds(read, "header X-Evil")) << read;
  EXPECT_FALSE(holds(read, "header Bcc")) << read;
}

TEST_F(ReceiverTest, RecipientsThatAreNoneStayWhereAPersonSeesThem) {
  EXPECT_EQ(
      home_.compose({"quoll://compose?to=somebody%20in%20the%20office%3B(null)%3B%3Ba%40x%3B"})
          .status,
      0);
  EXPECT_TRUE(holds(home_.compose({"--show"}).output, "To: somebody in the office <>, a@x\n"))
      << home_.compose({"--show"}).output;
}

TEST_F(ReceiverTest, AttachmentsComeInTheOrderOfTheirNumbers) {
  std::string url = "quoll://compose?";
  for (const char* name : {"10", "x", "2", "0"}) {
    url += std::string("&attachment_") + name + "=" +
           foundation::percent_encode(home_.stage(std::string("f") + name, name));
  }
  EXPECT_EQ(home_.compose({url}).status, 0);
  const auto read = home_.read_only_draft();
  EXPECT_TRUE(std::regex_search(read, std::regex("\"f0\"[^]*\"f2\"[^]*\"f10\"[^]*\"fx\""))) << read;
}

TEST_F(ReceiverTest, NamesAndBytesOfAttachmentsAreKept) {
  std::string cjk;
  while (cjk.size() + 3 <= 255) {
    cjk += "\u65e5";
  }
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  struct Row {
    const char* reason;
    std::string name;
    std::string json;  ///< as the reader prints it
    std::string content;
  };
  std::string cjk_json;
  for (std::size_t at = 0; at < cjk.size(); at += 3) {
    cjk_json += "\\u65e5";
  }
  const Row rows[] = {
      {"a comma, an apostrophe, a hash", "co,mma's #1.bin", "co,mma's #1.bin", bytes},
      {"quotes and a backslash", "a\"b\\c", "a\\\"b\\\\c", "x"},
      {"a line feed, as its picture", "a\nb", "a\\u240ab", "x"},
      {"per cent stays per cent", "100%20;.bin", "100%20;.bin", "\r\n.\r\n"},
      {"another script", "na\u00efve \u65e5\u672c", "na\\u00efve \\u65e5\\u672c", "x"},
      {"as long as a name may be", std::string(255, 'n'), std::string(255, 'n'), "x"},
      {"as long as a name of another script may be", cjk, cjk_json, "x"},
      {"nothing in it", "empty", "empty", ""},
      {"dots and a dash at the front", "-..name", "-..name", "x"},
  };
  std::vector<std::string> paths;
  for (const auto& row : rows) {
    paths.push_back(home_.stage(row.name, row.content));
  }
  EXPECT_EQ(home_.compose({ReceiverHome::url(paths)}).status, 0);
  const auto read = home_.read_only_draft();
  for (const auto& row : rows) {
    EXPECT_TRUE(holds(read, " \"" + row.json + "\" " + hex(row.content) + "\n"))
        << row.reason << "\n"
        << read;
  }
}

TEST_F(ReceiverTest, AMessageAsAnAttachmentKeepsItsBytes) {
  const std::string message = "Subject: x\n\nbody\n";
  EXPECT_EQ(home_.compose({ReceiverHome::url({home_.stage("m.eml", message)})}).status, 0);
  const auto read = home_.read_only_draft();
  EXPECT_TRUE(holds(read, " \"m.eml\" " + hex(message) + "\n")) << read;
  EXPECT_FALSE(holds(read, "message/")) << read;
}

TEST_F(ReceiverTest, ATextThatIsNotUtf8IsNotCalledAText) {
  const std::string ascii(65535, 'x');  // what follows stands over the edge of a block
  struct Row {
    const char* reason;
    std::string content;
    bool is_text;
  };
  const Row rows[] = {
      {"ASCII", "x\n", true},
      {"UTF-8", "caf\u00e9\n", true},
      {"UTF-8 at the end", "caf\u00e9", true},
      {"Latin-1", "caf\xe9\n", false},
      {"Latin-1 at the end", "caf\xe9", false},
      {"half a character at the end", "\xe6\x97", false},
      {"a character over the edge of a block", ascii + "\u65e5\n", true},
      {"Latin-1 at the edge of a block", ascii + "\xe9\n", false},
      {"Latin-1 behind it", ascii + "xx\xe9\n", false},
      {"the last bytes of a character", "x\x97\xa5\x97\xa5", false},
  };
  for (const Row& row : rows) {
    const auto ended = home_.compose({ReceiverHome::url({home_.stage("a.txt", row.content)})});
    EXPECT_EQ(holds(ended.output, "a.txt (text/plain, "), row.is_text) << row.reason;
    EXPECT_EQ(holds(ended.output, "a.txt (application/octet-stream, "), !row.is_text) << row.reason;
  }
}

TEST_F(ReceiverTest, WhatIsNotInTheStagingFolderIsLeftOutByName) {
  const std::string outside =
      home_.bus.path("containers/K7Q2M9XT4B.quoll/SharedData/Accounts.plist");
  std::ofstream(outside) << "secret";
  const std::string good = home_.stage("good.txt", "good");
  const auto staging = home_.staging();
  std::filesystem::create_symlink(outside, staging + "/link");
  std::filesystem::create_directory_symlink(home_.bus.path("home"), staging + "/linked-folder");
  std::ofstream(home_.bus.path("home/inside")) << "secret";
  std::filesystem::create_directory(staging + "/folder");
  ASSERT_EQ(mkfifo((staging + "/pipe").c_str(), 0600), 0);
  struct Row {
    const char* reason;
    std::string path;
  };
  const Row rows[] = {
      {"an absolute path elsewhere", "/etc/passwd"},
      {"a relative path", "good.txt"},
      {"nothing", ""},
      {"up and out", staging + "/../Accounts.plist"},
      {"up and out by a folder", staging + "/folder/../../Accounts.plist"},
      {"another root behind the prefix", staging + "//etc/passwd"},
      {"a link to a file outside", staging + "/link"},
      {"a link to a folder outside", staging + "/linked-folder/inside"},
      {"the process's own files", "/proc/self/environ"},
      {"a folder", staging + "/folder"},
      {"the staging folder itself", staging},
      {"the staging folder with a slash", staging + "/"},
      {"a pipe, which must not block", staging + "/pipe"},
      {"it is not there", staging + "/missing"},
      {"a folder whose name only begins alike", staging + "2/good.txt"},
      {"a URL where a path belongs", "file://" + good},
      {"a zero byte", good + std::string("\0.txt", 5)},
  };
  for (const auto& row : rows) {
    const auto before = home_.drafts().size();
    const auto ended = home_.compose({ReceiverHome::url({row.path, good})});
    EXPECT_EQ(ended.status, 1) << row.reason;
    EXPECT_TRUE(holds(ended.output, "Left out: ")) << row.reason << ended.output;
    EXPECT_TRUE(holds(ended.output, "  good.txt (text/plain, 4 bytes)\n")) << row.reason;
    EXPECT_TRUE(holds(ended.output, "Attachments: 1\n")) << row.reason << ended.output;
    EXPECT_EQ(home_.drafts().size(), before + 1) << row.reason << ended.errors;
  }
  for (const auto& draft : home_.drafts()) {
    EXPECT_FALSE(holds(read_file(draft), "c2VjcmV0"));  // the secret in Base64
  }
  EXPECT_TRUE(home_.taken().empty());
}

TEST_F(ReceiverTest, WhatIsNoComposeCommandIsRefusedInOneLine) {
  struct Row {
    const char* reason;
    const char* url;
  };
  const Row rows[] = {
      {"no URL", "hello"},
      {"nothing", ""},
      {"another scheme", "https://example.org/"},
      {"mail links are the mail client's", "mailto:a@x"},
      {"another command", "quoll://send?subject=x"},
      {"no command", "quoll://?subject=x"},
      {"command words are written small", "quoll://Compose?x=1"},
      {"so is the scheme", "QUOLL://compose?x=1"},
      {"a query needs its sign", "quoll://compose&subject=x"},
      {"no command is in an escape", "quoll://comp%6Fse?subject=x"},
      {"a command stands alone", "quoll://me@compose:1/path?subject=x"},
      {"an escape that stands for no text", "quoll://compose?subject=%FF"},
      {"an escape that stands for no text, in a key", "quoll://compose?%FF=1"},
      {"a query behind the fragment", "quoll://compose#a?b=c"},
  };
  for (const auto& row : rows) {
    const auto ended = home_.compose({row.url});
    EXPECT_EQ(ended.status, 1) << row.reason << ended.output;
    EXPECT_TRUE(ended.output.empty()) << row.reason << ended.output;
    EXPECT_EQ(std::ranges::count(ended.errors, '\n'), 1) << row.reason << ": " << ended.errors;
  }
  EXPECT_TRUE(home_.drafts().empty());
}

TEST_F(ReceiverTest, TheSummaryIsSafeOnATerminal) {
  const auto ended = home_.compose({ReceiverHome::url({home_.stage("a\x1b]0;x\x07", "x")},
                                                      "subject=%1B%5B2J&plainBody=%C2%9B31m%08")});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  for (const char* control : {"\x1b", "\x07", "\x08", "\u009b"}) {
    EXPECT_FALSE(holds(ended.output, control)) << ended.output;
  }
}

TEST_F(ReceiverTest, DraftsAreListedAndShown) {
  EXPECT_EQ(home_.compose({"--list"}).output, "");
  EXPECT_EQ(home_.compose({"--show"}).status, 1);
  for (const char* subject : {"one", "two", "three"}) {
    ASSERT_EQ(home_.compose({std::string("quoll://compose?subject=") + subject}).status, 0);
  }
  const auto listed = home_.compose({"--list"});
  const std::string line =
      R"(\d{8}-\d{6}(-\d+)?  \d{4}-\d\d-\d\d \d\d:\d\d:\d\d  kept: [a-z, ]+  (one|two|three)  /\S+/\d{8}-\d{6}(-\d+)?\.eml\n)";
  EXPECT_TRUE(std::regex_match(listed.output, std::regex("(" + line + "){3}"))) << listed.output;
  EXPECT_LT(listed.output.find("  one  "), listed.output.find("  two  "));
  EXPECT_LT(listed.output.find("  two  "), listed.output.find("  three  "));
  EXPECT_TRUE(holds(home_.compose({"--show"}).output, "Subject: three\n"));
  const auto drafts = home_.drafts();
  for (const auto& draft : drafts) {
    EXPECT_TRUE(holds(home_.compose({"--show", draft}).output, "Draft: " + draft + "\n"));
    EXPECT_EQ(std::filesystem::status(draft).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  }
}

TEST_F(ReceiverTest, AFileThatCannotBeShownIsSaid) {
  for (const std::string path : {"/nonexistent", "/", "/dev/zero"}) {
    const auto ended = home_.compose({"--show", path});
    EXPECT_EQ(ended.status, 1) << path;
    EXPECT_TRUE(ended.errors.starts_with("quoll-compose: " + path + " ")) << ended.errors;
  }
}

TEST_F(ReceiverTest, WrongUseIsSaid) {
  EXPECT_EQ(home_.compose({}).status, 2);
  EXPECT_EQ(home_.compose({"--nonsense"}).status, 2);
  EXPECT_EQ(home_.compose({"--list", "quoll://compose?"}).status, 2);
  EXPECT_EQ(home_.compose({"--help"}).status, 0);
  EXPECT_TRUE(home_.compose({"--version"}).output.starts_with("quoll-compose "));
}

TEST_F(ReceiverTest, ManyFilesNeedFewDescriptors) {
  std::vector<std::string> paths;
  for (int number = 0; number < 300; ++number) {
    paths.push_back(home_.stage("f" + std::to_string(number), "x"));
  }
  const auto ended =
      run({"sh", "-c", "ulimit -n 64; exec \"$0\" \"$1\"", QUOLL_COMPOSE, ReceiverHome::url(paths)},
          home_.bus.environment());
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output, "Attachments: 300\n")) << ended.output;
}

TEST(ReceiverWithoutAHome, SaysSo) {
  const ReceiverHome home(Environment{{"HOME", std::nullopt}, {"XDG_DATA_HOME", std::nullopt}});
  const auto ended = home.compose({"quoll://compose?subject=x"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(holds(ended.errors, "there is no home folder")) << ended.errors;
}

TEST(ReceiverWithoutAContainer, LeavesTheFilesOut) {
  const ReceiverHome home(Environment{{"QUOLL_GROUP_CONTAINERS", "/proc/nonexistent"}});
  const auto ended = home.compose({ReceiverHome::url({"/etc/passwd"})});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(holds(ended.output, "Left out: /etc/passwd: the shared folder is not there\n"))
      << ended.output << ended.errors;
}

TEST(ReceiverWithoutRoom, SaysSoAndKeepsNothing) {
  const ReceiverHome home;
  if (mount("quoll-test", home.bus.data_home().c_str(), "tmpfs", 0, "size=256k") != 0) {
    const char* ci = std::getenv("CI");
    ASSERT_STRNE(ci, "true") << "a small file system must be mounted where everything is tested";
    GTEST_SKIP() << "only root can mount a small file system";
  }
  const auto ended =
      home.compose({ReceiverHome::url({home.stage("big", std::string(1U << 20U, 'x'))})});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(std::ranges::count(ended.errors, '\n'), 1) << ended.errors;
  EXPECT_TRUE(holds(ended.errors, "big cannot be taken") || holds(ended.errors, "no room"))
      << ended.errors;
  EXPECT_TRUE(home.drafts().empty());
  EXPECT_TRUE(home.taken().empty());
  umount(home.bus.data_home().c_str());
}

}  // namespace
}  // namespace quoll::test
