#include "quoll/linux/links/scanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>

#include "quoll/foundation/nsurl.h"

namespace quoll::links {
namespace {

/// A small world: the questions are answered from here and counted.
struct World {
  std::size_t asked = 0;
  std::vector<std::string> hosts;

  Questions questions() {
    return {[this](std::string_view label) {
              ++asked;
              const std::string_view known[] = {"org", "com", "uk", "xn--p1ai", "cc", "md", "ml",
                                                "mov", "ps",  "py", "rs",       "sh", "so", "zip"};
              return std::find(std::begin(known), std::end(known), label) != std::end(known);
            },
            [this](std::string_view host) -> std::optional<std::string> {
              ++asked;
              hosts.emplace_back(host);
              const std::map<std::string, std::string, std::less<>> known{
                  {"b\xC3\xBC"
                   "cher.org",
                   "xn--bcher-kva.org"},
                  {"\xD0\xB0.\xD1\x80\xD1\x84", "xn--80a.xn--p1ai"},
                  {"\xC3\xBC.org", std::string(250, 'a') + ".org"}};
              const auto found = known.find(host);
              return found == known.end() ? std::nullopt : std::optional(found->second);
            }};
  }
};

std::vector<std::string> urls(std::string_view text) {
  World world;
  std::vector<std::string> out;
  for (const Found& link : scan(text, world.questions())) {
    out.push_back(link.url);
  }
  return out;
}

struct Row {
  const char* text;
  std::vector<std::string> expected;
  const char* reason;
};

void check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(urls(row.text), row.expected) << row.text << "\nbecause: " << row.reason;
  }
}

TEST(Scan, TakesAddressesWithASchemeAsTheyStand) {
  check({
      {"http://example.org", {"http://example.org"}, "a host is enough"},
      {"https://example.org/a?b=c#d", {"https://example.org/a?b=c#d"}, "all components"},
      {"ftp://example.org/a.txt", {"ftp://example.org/a.txt"}, "the third scheme"},
      {"HtTp://Example.ORG/A", {"HtTp://Example.ORG/A"}, "in any case, kept"},
      {"HTTPS://h", {"HTTPS://h"}, "capitals"},
      {"FTP://h", {"FTP://h"}, "capitals"},
      {"http://localhost", {"http://localhost"}, "any name of a host"},
      {"http://h:8080/x", {"http://h:8080/x"}, "a port"},
      {"http://h:8080", {"http://h:8080"}, "a port at the end"},
      {"http://u:p%40@h/", {"http://u:p%40@h/"}, "a user"},
      {"http://u@v@h/", {"http://u@v@h/"}, "the last @ ends the user"},
      {"http://a+b:%!$&*=~@h/", {"http://a+b:%25!$&*=~@h/"}, "what a user is made of"},
      {"http://a_b.c/", {"http://a_b.c/"}, "an underscore, though no domain has it"},
      {"http://notes.py", {"http://notes.py"}, "what reads like a file"},
      {"http://h./x", {"http://h./x"}, "the root of the names"},
      {"http://h.:80/x", {"http://h"}, "but only before a path"},
      {"http://[::1]:80/x", {"http://[::1]:80/x"}, "an address in brackets"},
      {"http://[0123456789ABCDEFabcdef:.]",
       {"http://[0123456789ABCDEFabcdef:.]"},
       "its characters"},
      {"http://h?x", {"http://h?x"}, "a query without a path"},
      {"http://h#x", {"http://h#x"}, "a fragment without a path"},
      {"see:http://h/", {"http://h/"}, "after a colon"},
      {"/http://h/", {"http://h/"}, "a scheme needs no gap before it"},
      {"\xE7\x9C\x8Bhttp://h/", {"http://h/"}, "a character of another script ends no scheme"},
      {"_http://h/", {"http://h/"}, "neither does an underscore"},
  });
}

TEST(Scan, PassesOverWhatIsNoAddress) {
  check({
      {"", {}, "nothing"},
      {"no link at all", {}, "words"},
      {"http://", {}, "no host"},
      {"http:///x", {}, "no host"},
      {"http://.h", {}, "a host begins with a letter or a digit"},
      {"http://-h", {}, "a host begins with a letter or a digit"},
      {"http://_h", {}, "a host begins with a letter or a digit"},
      {"http:/h", {}, "one slash"},
      {"http:h", {}, "no slash"},
      {"http//h", {}, "no colon"},
      {"://h", {}, "no scheme"},
      {"xhttp://h", {}, "another scheme"},
      {"git+http://h", {}, "another scheme"},
      {"a-http://h", {}, "another scheme"},
      {"a.http://h", {}, "another scheme"},
      {"1https://h", {}, "another scheme, one character longer than the longest"},
      {"httpx://h", {}, "another scheme"},
      {"htt://h", {}, "another scheme"},
      {"file://example.org/x", {}, "another scheme, and its host is none of its own"},
      {"http://[]", {}, "an empty address"},
      {"http://[::1", {}, "an open bracket"},
      {"http://[::1", {}, "an open bracket at the end"},
      {"http://[g]", {}, "no address"},
      {"http://u@", {}, "a user without a host"},
      {"http://u@/x", {}, "a user without a host"},
      {"http://\xC3\xA9/", {}, "a host that has no ASCII form"},
  });
}

TEST(Scan, TakesNamesWithAKnownTopLevelDomain) {
  check({
      {"www.example.org", {"http://www.example.org"}, "the usual name"},
      {"example.org", {"http://example.org"}, "without www."},
      {"example.org/x", {"http://example.org/x"}, "with a path"},
      {"WWW.Example.ORG", {"http://WWW.Example.ORG"}, "in any case, kept"},
      {"example.org:80/x", {"http://example.org:80/x"}, "with a port"},
      {"example.org:80", {"http://example.org:80"}, "with a port only"},
      {"example.org?a=b", {"http://example.org?a=b"}, "with a query"},
      {"example.org#a", {"http://example.org#a"}, "with a fragment"},
      {"example.org./a", {"http://example.org./a"}, "with the root of the names"},
      {"a-b.example.co.uk", {"http://a-b.example.co.uk"}, "several labels"},
      {"1.org", {"http://1.org"}, "digits"},
      {"example.test", {}, "an unknown top-level domain"},
      {"www.example.test", {}, "www. makes no domain known"},
      {"org", {}, "one label"},
      {"org=b.org", {"http://b.org"}, "one label in a word with a name"},
      {"192.168.0.1/x", {}, "numbers"},
      {"a.b.", {}, "a dot at the end leaves the name before it"},
      {".example.org", {}, "a dot in front"},
      {"a..org", {}, "an empty label"},
      {"-a.org", {}, "a hyphen in front"},
      {"a-.org", {}, "a hyphen at the end of a label"},
      {"x.-a.org", {}, "a hyphen in front of a label"},
      {"a.org-", {}, "a hyphen behind"},
      {"a_b.org", {}, "an underscore"},
      {"a+b.org", {}, "a plus"},
      {"b.org+a", {}, "a plus behind"},
      {"example.org_", {}, "an underscore behind"},
      {"example.org..", {"http://example.org"}, "two dots behind"},
      {"a.org...b.org", {"http://a.org"}, "what follows dots is not alone"},
      {"example.org:x", {"http://example.org"}, "a colon without a port"},
      {"example.org:x.org", {"http://example.org", "http://x.org"}, "after a colon"},
      {"url=example.org", {"http://example.org"}, "after an equals sign"},
      {"(example.org)", {"http://example.org"}, "in brackets"},
      {"*example.org*", {"http://example.org"}, "between stars"},
  });
}

TEST(Scan, LooksAtTheLengthOfNames) {
  const std::string longest(63, 'a');
  EXPECT_EQ(urls(longest + ".org").size(), 1U);
  EXPECT_EQ(urls(longest + "a.org").size(), 0U) << "a label of 64";
  const std::string three = longest + "." + longest + "." + longest + ".";
  EXPECT_EQ(urls(three + std::string(57, 'b') + ".org").size(), 1U) << "253 characters";
  EXPECT_EQ(urls(three + std::string(58, 'b') + ".org").size(), 0U) << "254 characters";
  EXPECT_EQ(urls("http://" + three + longest + ".org").size(), 1U) << "a scheme makes it a link";
  EXPECT_EQ(urls("\xC3\xBC.org").size(), 0U) << "254 characters in the ASCII form";
}

TEST(Scan, AsksForTheTopLevelDomainInLowerCase) {
  World world;
  Questions questions = world.questions();
  std::vector<std::string> asked;
  questions.is_top_level_domain = [&](std::string_view label) {
    asked.emplace_back(label);
    return false;
  };
  EXPECT_TRUE(scan("Aa.AZaz-09 b.org c b@Q.X", questions).empty());
  EXPECT_EQ(asked, (std::vector<std::string>{"azaz-09", "org", "x"}));
}

TEST(Scan, PassesOverNamesInsideOthers) {
  check({
      {"/srv/example.org", {}, "a path"},
      {"C:\\example.org", {}, "a path of another system"},
      {"a@b@example.org", {}, "an address inside an address"},
      {"@example.org", {}, "no local part"},
      {"%2Fexample.org", {}, "an escape"},
      {"foo://joe@example.org", {}, "inside an address of another scheme"},
  });
}

TEST(Scan, TakesFilesForFiles) {
  for (const std::string ending : {"cc", "md", "ml", "mov", "ps", "py", "rs", "sh", "so", "zip"}) {
    EXPECT_TRUE(urls("notes." + ending).empty()) << ending;
    EXPECT_TRUE(
        urls("NOTES." + std::string(1, static_cast<char>(ending[0] - 32)) + ending.substr(1))
            .empty())
        << ending << " in capitals";
  }
  check({
      {"README.md", {}, "a file"},
      {"notes.py.", {}, "at the end of a sentence"},
      {"(a.zip)", {}, "in brackets"},
      {"notes.py:80", {}, "a port is no path"},
      {"notes.py?x", {}, "a query is no path"},
      {"notes.py#x", {}, "a fragment is no path"},
      {"notes.py/", {"http://notes.py/"}, "a path"},
      {"notes.py:80/x", {"http://notes.py:80/x"}, "a path behind a port"},
      {"www.zip", {"http://www.zip"}, "with www."},
      {"WWW.zip", {"http://WWW.zip"}, "with www. in capitals"},
      {"wwww.zip", {}, "without www."},
      {"my.notes.py", {"http://my.notes.py"}, "three labels"},
      {"http://a.zip", {"http://a.zip"}, "with a scheme"},
      {"joe@a.zip", {"mailto:joe@a.zip"}, "a mail address"},
  });
}

TEST(Scan, TakesMailAddresses) {
  check({
      {"joe@example.org", {"mailto:joe@example.org"}, "the usual one"},
      {"Joe.B-c_d+e1@Example.Org", {"mailto:Joe.B-c_d+e1@Example.Org"}, "a local part, kept"},
      {"mailto:joe@example.org", {"mailto:joe@example.org"}, "its scheme is written once"},
      {"joe@example.org.", {"mailto:joe@example.org"}, "at the end of a sentence"},
      {"joe@example.org/x", {"mailto:joe@example.org"}, "no path"},
      {"joe@example.org:80", {"mailto:joe@example.org"}, "no port"},
      {"<joe@example.org>", {"mailto:joe@example.org"}, "in angle brackets"},
      {"j\xC3\xBC@example.org", {"mailto:j%C3%BC@example.org"}, "another script"},
      {"a@b.org,c@d.org", {"mailto:a@b.org", "mailto:c@d.org"}, "two"},
      {"joe@example.test", {}, "an unknown top-level domain"},
      {"joe@localhost", {}, "one label"},
      {"j.d@org", {}, "one label that is a top-level domain"},
      {"joe@", {}, "no host"},
      {".joe@example.org", {}, "a dot in front"},
      {"joe.@example.org", {}, "a dot behind"},
      {"j..e@example.org", {}, "two dots"},
      {"a@b.org@c", {}, "two hosts"},
      {"joe@b.org+x", {}, "a plus behind"},
      {"joe@b.org_", {}, "an underscore behind"},
      {"joe@b.org..", {"mailto:joe@b.org"}, "two dots behind"},
      {"a/joe@b.org", {}, "inside a path"},
      {"a@http://h/", {"http://h/"}, "another link behind the at sign"},
  });
}

TEST(Scan, EndsBeforeWhatNoAddressHolds) {
  for (const char* stop : {" ", "\t", "\n", "\r", "<", ">", "\"", "'", "`", "\x01", "\x1F", "\x7F",
                           "\xC2\xA0", "\xE2\x80\x9D", "\xC2\xBB", "\xE3\x80\x80"}) {
    EXPECT_EQ(urls("http://h/a" + std::string(stop) + "b"), std::vector<std::string>{"http://h/a"})
        << stop;
    EXPECT_EQ(urls("http://h" + std::string(stop) + "b"), std::vector<std::string>{"http://h"})
        << stop;
    EXPECT_EQ(urls("x.y" + std::string(stop) + "b.org" + stop + "/z"),
              std::vector<std::string>{"http://b.org"})
        << stop;
  }
  EXPECT_EQ(urls(std::string("http://h/a\0b", 12)), std::vector<std::string>{"http://h/a"});
  EXPECT_EQ(urls("http://h/\xE2\x80\x93x"), std::vector<std::string>{"http://h/%E2%80%93x"})
      << "a dash may stand in a path";
  EXPECT_EQ(urls("http://h.org\xE2\x80\x94x"), std::vector<std::string>{"http://h.org"})
      << "a dash stands in no host";
  EXPECT_EQ(urls("b.org\xEF\xBC\x8C"
                 "c.org"),
            (std::vector<std::string>{"http://b.org", "http://c.org"}));
}

TEST(Scan, LeavesOutTrailingPunctuation) {
  for (const char c : std::string_view(".,!?;:")) {
    const std::string mark(1, c);
    EXPECT_EQ(urls("http://h/a" + mark), std::vector<std::string>{"http://h/a"}) << c;
    EXPECT_EQ(urls("http://h/a" + mark + mark + " b"), std::vector<std::string>{"http://h/a"}) << c;
    EXPECT_EQ(urls("http://h/a" + mark + "b"), std::vector<std::string>{"http://h/a" + mark + "b"})
        << c << " inside";
    EXPECT_EQ(urls("b.org" + mark), std::vector<std::string>{"http://b.org"}) << c;
    EXPECT_EQ(urls("http://h" + mark), std::vector<std::string>{"http://h"}) << c;
  }
  check({
      {"http://h/a-", {"http://h/a-"}, "a hyphen stays"},
      {"http://h/a/", {"http://h/a/"}, "a slash stays"},
      {"b.org?!", {"http://b.org"}, "an empty query goes"},
      {"http://h/?", {"http://h/"}, "an empty query goes"},
      {"http://h/.,!?;:", {"http://h/"}, "all of them"},
  });
}

TEST(Scan, LeavesOutUnbalancedClosingBrackets) {
  check({
      {"(http://h/a)", {"http://h/a"}, "round"},
      {"[http://h/a]", {"http://h/a"}, "square"},
      {"{http://h/a}", {"http://h/a"}, "curly"},
      {"http://h/a_(x)", {"http://h/a_(x)"}, "a balanced one stays"},
      {"(http://h/a_(x))", {"http://h/a_(x)"}, "one stays, one goes"},
      {"http://h/[x]", {"http://h/[x]"}, "square brackets balance"},
      {"http://h/{x}", {"http://h/%7Bx%7D"}, "curly ones too, encoded"},
      {"http://h/(x]", {"http://h/(x"}, "each kind for itself"},
      {"http://h/(x)y)z", {"http://h/(x)y"}, "the link ends there"},
      {"http://h/((x))", {"http://h/((x))"}, "two deep"},
      {"http://h/(", {"http://h/("}, "an opening one stays"},
      {"(http://h/a.)", {"http://h/a"}, "a full stop before it goes as well"},
      {"[a](http://h/a)[b](http://h/b)", {"http://h/a", "http://h/b"}, "one after the other"},
      {"(see http://h)", {"http://h"}, "behind a host"},
      {"http://h/)http://g/", {"http://h/", "http://g/"}, "another link behind it"},
  });
}

TEST(Scan, EncodesWhatNoUrlHolds) {
  check({
      {"http://h/\xC3\xA9", {"http://h/%C3%A9"}, "another script"},
      {"http://h/?\xC3\xA9#\xC3\xA9", {"http://h/?%C3%A9#%C3%A9"}, "in every component"},
      {"http://h/%41%zz%", {"http://h/%41%25zz%25"}, "a percent sign that begins no escape"},
      {"http://h/%4", {"http://h/%254"}, "an escape that is cut"},
      {"http://h/#a#b#", {"http://h/#a%23b%23"}, "the second hash"},
      {"http://h/{|\\^", {"http://h/%7B%7C%5C%5E"}, "signs"},
      {"http://h/-_.!~*();/?:@&=+$,[]x", {"http://h/-_.!~*();/?:@&=+$,[]x"}, "what it does hold"},
      {"http://h/\xFF", {"http://h/%FF"}, "what is not UTF-8"},
      {"http://\xC3\xBC:p@h", {"http://%C3%BC:p@h"}, "a user"},
      {"http://b\xC3\xBC"
       "cher.org/\xC3\xBC",
       {"http://xn--bcher-kva.org/%C3%BC"},
       "a host"},
      {"b\xC3\xBC"
       "cher.org",
       {"http://xn--bcher-kva.org"},
       "a bare name"},
      {"\xD0\xB0.\xD1\x80\xD1\x84/x", {"http://xn--80a.xn--p1ai/x"}, "a whole name"},
      {"joe@b\xC3\xBC"
       "cher.org",
       {"mailto:joe@xn--bcher-kva.org"},
       "of a mail address"},
  });
}

TEST(Scan, AsksForTheAsciiFormOfPlausibleHostsOnly) {
  World world;
  EXPECT_TRUE(scan("a.\xC3\xA9\xC3\xA9 x\xC3\xA9x.", world.questions()).empty());
  EXPECT_EQ(world.hosts, std::vector<std::string>{"a.\xC3\xA9\xC3\xA9"}) << "a dot inside";
  std::string host = "\xC3\xA9.";
  host += std::string(1024 - host.size(), 'a');
  world.hosts.clear();
  EXPECT_TRUE(scan(host + " " + host + "a", world.questions()).empty());
  EXPECT_EQ(world.hosts, std::vector<std::string>{host}) << "1024 bytes, not 1025";
}

TEST(Scan, TellsWhereALinkStands) {
  World world;
  const auto found = scan("see (b.org/x), joe@c.org. <http://h>", world.questions());
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].location, 5U);
  EXPECT_EQ(found[0].length, 7U);
  EXPECT_EQ(found[1].location, 15U);
  EXPECT_EQ(found[1].length, 9U);
  EXPECT_EQ(found[2].location, 27U);
  EXPECT_EQ(found[2].length, 8U);
}

TEST(Scan, KeepsOrderAndRepeats) {
  EXPECT_EQ(
      urls("b.org a@b.org http://h b.org"),
      (std::vector<std::string>{"http://b.org", "mailto:a@b.org", "http://h", "http://b.org"}));
}

/// A scan that grew with the square of these would not end before the test's time is up.
TEST(Scan, GrowsWithTheTextOnly) {
  constexpr std::size_t kSize = std::size_t{1} << 20U;
  for (const std::string piece : {"(",
                                  ")",
                                  "[",
                                  "a.",
                                  ".",
                                  "@",
                                  "a@",
                                  "a@b.",
                                  "http://",
                                  "http://a",
                                  "http://[",
                                  "http://[a",
                                  "://",
                                  ":",
                                  "/",
                                  "http://a/)",
                                  "http://a@",
                                  "http://a/(",
                                  "a.org/)",
                                  "a.org:",
                                  "a.org?",
                                  "a.org,",
                                  "\xC3\xA9.",
                                  "\xE3\x81\x82",
                                  "\xE2\x80\x94",
                                  "%",
                                  "#",
                                  "http://h/#%",
                                  "-",
                                  "+",
                                  "www.",
                                  "http:",
                                  "x.http://",
                                  "a.org.",
                                  "\xE2",
                                  "1.2@",
                                  "http://h:1"}) {
    std::string text;
    while (text.size() < kSize) {
      text += piece;
    }
    World world;
    std::size_t end = 0;
    for (const Found& link : scan(text, world.questions())) {
      ASSERT_GE(link.location, end) << piece;
      ASSERT_GT(link.length, 0U) << piece;
      end = link.location + link.length;
      ASSERT_NE(foundation::NSURL::URLWithString(link.url), nullptr) << link.url.substr(0, 99);
    }
    EXPECT_LE(end, text.size()) << piece;
    EXPECT_LE(world.asked, text.size()) << piece;
  }
}

}  // namespace
}  // namespace quoll::links
