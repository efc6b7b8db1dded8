#include "quoll/foundation/nsurl.h"

#include <gtest/gtest.h>

#include <regex>

namespace quoll::foundation {
namespace {

using Text = std::optional<std::string>;

TEST(URLWithString, LooksAtCharactersOnly) {
  for (const std::string_view text :
       {"http://h", "(null)", "a", "//", ":", "http://h:port", "%af", "%FA", "%09", "a#", "#",
        "a#b?c", "%41", "%c3", "-_.!~*'();/?:@&=+$,[]", "quoll://compose?"}) {
    const auto url = NSURL::URLWithString(text);
    ASSERT_NE(url, nullptr) << text;
    EXPECT_EQ(url->absoluteString(), text);
    EXPECT_EQ(url->description(), text);
  }
}

TEST(URLTakingString, IsTheSameURL) {
  std::string text = "http://example.org/" + std::string(100, 'a');
  const std::string copy = text;
  const auto url = NSURL::URLTakingString(std::move(text));
  EXPECT_EQ(url->absoluteString(), copy);
  EXPECT_EQ(url->path()->size(), 101U);
  EXPECT_EQ(NSURL::URLTakingString("a b"), nullptr);
  EXPECT_EQ(NSURL::URLTakingString(""), nullptr);
}

TEST(URLWithString, RefusesEveryOtherCharacter) {
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const bool allowed = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') ||
                         std::string_view("-_.!~*'();/?:@&=+$,[]#").find(c) != std::string::npos;
    EXPECT_EQ(NSURL::URLWithString("a" + std::string(1, c) + "b") != nullptr, allowed) << byte;
  }
}

TEST(URLWithString, LooksAtEveryPlace) {
  const std::regex url_text(
      R"(([-\w.!~*'();/?:@&=+$,[\]]|%[0-9A-Fa-f]{2})*(#([-\w.!~*'();/?:@&=+$,[\]]|%[0-9A-Fa-f]{2})*)?)");
  for (const std::string seed : {"http://u:p@h:8/%4b;x?q=1#f", "a/%C3%a9"}) {
    for (int byte = 0; byte < 256; ++byte) {
      for (std::size_t place = 0; place <= seed.size(); ++place) {
        const std::string text = std::string(seed).insert(place, 1, static_cast<char>(byte));
        EXPECT_EQ(NSURL::URLWithString(text) != nullptr, std::regex_match(text, url_text)) << text;
      }
    }
  }
}

TEST(URLWithString, RefusesBadEscapesAndASecondFragment) {
  for (const auto text : {"", "%", "a%4", "%zz", "%4z", "%ag", "%ga", "%aG", "%@a", "%a`", "%:0",
                          "%0/", "a#b#c", "##", "http://h/<id>", "é"}) {
    EXPECT_EQ(NSURL::URLWithString(text), nullptr) << text;
  }
}

struct Parts {
  const char* reason;
  std::string_view text;
  Text scheme, host, user, password, path, parameters, query, fragment;
  std::optional<std::int64_t> port;
};

TEST(URLComponents, AreTakenFromTheText) {
  const Parts cases[] = {
      {"everything", "http://u:p@h:8080/a/b;x?q=1#f", "http", "h", "u", "p", "/a/b", "x", "q=1",
       "f", 8080},
      {"no path", "http://h", "http", "h", {}, {}, {}, {}, {}, {}, {}},
      {"an empty query is present", "http://h?", "http", "h", {}, {}, {}, {}, "", {}, {}},
      {"an empty fragment is present", "http://h#", "http", "h", {}, {}, {}, {}, {}, "", {}},
      {"a user without a password", "http://u@h", "http", "h", "u", {}, {}, {}, {}, {}, {}},
      {"an empty password", "http://u:@h", "http", "h", "u", "", {}, {}, {}, {}, {}},
      {"an empty user", "http://@h", "http", "h", "", {}, {}, {}, {}, {}, {}},
      {"user, host and path are decoded, the rest is not",
       "http://%75:%70@%68/%2F%41;%41?%41#%41",
       "http",
       "h",
       "u",
       "%70",
       "//A",
       "%41",
       "%41",
       "%41",
       {}},
      {"case is kept", "HTTP://H/P", "HTTP", "H", {}, {}, "/P", {}, {}, {}, {}},
      {"trailing slashes go", "http://h/a//", "http", "h", {}, {}, "/a", {}, {}, {}, {}},
      {"but the root stays", "http://h//", "http", "h", {}, {}, "/", {}, {}, {}, {}},
      {"an address of its own form",
       "http://[::1]:80/",
       "http",
       "::1",
       {},
       {},
       "/",
       {},
       {},
       {},
       80},
      {"a colon at the end of an address",
       "http://[::]:80/",
       "http",
       "::",
       {},
       {},
       "/",
       {},
       {},
       {},
       80},
      {"a bracket that does not close", "http://[::1/", "http", "[", {}, {}, "/", {}, {}, {}, {}},
      {"an odd port is no port", "http://h:x1/", "http", "h", {}, {}, "/", {}, {}, {}, {}},
      {"an empty port is no port", "http://h:/", "http", "h", {}, {}, "/", {}, {}, {}, {}},
      {"only the last segment has parameters",
       "http://h/a;x/b",
       "http",
       "h",
       {},
       {},
       "/a;x/b",
       {},
       {},
       {},
       {}},
      {"from its first semicolon on", "/b;x;y", {}, {}, {}, {}, "/b", "x;y", {}, {}, {}},
      {"a scheme whose rest is no path", "mailto:x?y#z", "mailto", {}, {}, {}, {}, {}, {}, {}, {}},
      {"a scheme and a path", "file:/tmp/a", "file", {}, {}, {}, "/tmp/a", {}, {}, {}, {}},
      {"a scheme needs a letter in front", "1a:/b", {}, {}, {}, {}, "1a:/b", {}, {}, {}, {}},
      {"and ends where the path begins", "a/b:c", {}, {}, {}, {}, "a/b:c", {}, {}, {}, {}},
      {"plus, minus and point may be in it", "a+-.1:/b", "a+-.1", {}, {}, {}, "/b", {}, {}, {}, {}},
      {"no scheme", "//h/p", {}, "h", {}, {}, "/p", {}, {}, {}, {}},
      {"a question mark behind the fragment is the fragment's",
       "/a#b?c",
       {},
       {},
       {},
       {},
       "/a",
       {},
       {},
       "b?c",
       {}},
      {"an authority ends at the query",
       "http://h?a/b",
       "http",
       "h",
       {},
       {},
       {},
       {},
       "a/b",
       {},
       {}},
      {"what does not decode is absent",
       "http://%FF:a@%FF/%FF",
       "http",
       {},
       {},
       "a",
       {},
       {},
       {},
       {},
       {}},
      {"a zero byte decodes", "/a%00b", {}, {}, {}, {}, std::string("/a\0b", 4), {}, {}, {}, {}},
      {"a scheme ends at its colon and nowhere else",
       "a?b:/c",
       {},
       {},
       {},
       {},
       "a",
       {},
       "b:/c",
       {},
       {}},
      {"the last at sign parts user and host",
       "http://a@b@h/",
       "http",
       "h",
       "a@b",
       {},
       "/",
       {},
       {},
       {},
       {}},
      {"an address ends at its first bracket",
       "http://[::1]x]:8/",
       "http",
       "::1",
       {},
       {},
       "/",
       {},
       {},
       {},
       8},
      {"a bracket inside a name is part of it",
       "http://h]:80/",
       "http",
       "h]",
       {},
       {},
       "/",
       {},
       {},
       {},
       80},
      {"nothing in brackets is no host", "http://[]:8", "http", {}, {}, {}, {}, {}, {}, {}, 8},
      {"an empty authority has no host", "http:///p", "http", {}, {}, {}, "/p", {}, {}, {}, {}},
      {"a colon in front", ":a", {}, {}, {}, {}, ":a", {}, {}, {}, {}},
  };
  for (const Parts& row : cases) {
    const auto url = NSURL::URLWithString(row.text);
    ASSERT_NE(url, nullptr) << row.reason;
    EXPECT_EQ(url->scheme(), row.scheme) << row.reason;
    EXPECT_EQ(url->host(), row.host) << row.reason;
    EXPECT_EQ(url->user(), row.user) << row.reason;
    EXPECT_EQ(url->password(), row.password) << row.reason;
    EXPECT_EQ(url->path(), row.path) << row.reason;
    EXPECT_EQ(url->parameterString(), row.parameters) << row.reason;
    EXPECT_EQ(url->query(), row.query) << row.reason;
    EXPECT_EQ(url->fragment(), row.fragment) << row.reason;
    EXPECT_EQ(url->port(), row.port) << row.reason;
  }
}

TEST(IsFileURL, LooksAtTheSchemeInAnyCase) {
  for (const auto text : {"file:///a", "FILE:///a", "File:/a"}) {
    EXPECT_TRUE(NSURL::URLWithString(text)->isFileURL()) << text;
  }
  for (const auto text : {"files:///a", "http://file/", "/file", "fil:///a", "&ile:///a"}) {
    EXPECT_FALSE(NSURL::URLWithString(text)->isFileURL()) << text;
  }
}

TEST(FileUrl, HoldsAnyPath) {
  const auto url = NSURL::file_url("/a b/é;#?%.txt", false);
  EXPECT_EQ(url->absoluteString(), "file:///a%20b/%C3%A9%3B%23%3F%25.txt");
  EXPECT_EQ(url->path(), "/a b/é;#?%.txt");
  EXPECT_EQ(foundation::file_system_path(url), "/a b/é;#?%.txt");
  EXPECT_TRUE(url->isFileURL());

  const auto bytes = NSURL::file_url("/\xFF", false);
  EXPECT_EQ(bytes->path(), std::nullopt) << "no text";
  EXPECT_EQ(foundation::file_system_path(bytes), "/\xFF") << "but a file's name";

  EXPECT_EQ(NSURL::file_url("/a", true)->absoluteString(), "file:///a/");
  EXPECT_EQ(NSURL::file_url("/a/", true)->absoluteString(), "file:///a/");
  EXPECT_EQ(NSURL::file_url("/a/", true)->path(), "/a");
  EXPECT_EQ(NSURL::file_url("", false), nullptr);
}

TEST(URLByAppendingPathComponent, JoinsOneComponent) {
  const auto folder = NSURL::file_url("/g", true);
  EXPECT_EQ(URLByAppendingPathComponent(folder, "a b")->absoluteString(), "file:///g/a%20b");
  EXPECT_EQ(
      URLByAppendingPathComponent(NSURL::URLWithString("http://h/a?q#f"), "b")->absoluteString(),
      "http://h/a/b?q#f");
  EXPECT_EQ(
      URLByAppendingPathComponent(NSURL::URLWithString("http://h/a#f"), "b")->absoluteString(),
      "http://h/a/b#f");
  EXPECT_EQ(URLByAppendingPathComponent(nullptr, "a"), nullptr) << "nothing appended to nothing";
}

TEST(URLEquality, IsByText) {
  const auto url = NSURL::URLWithString("http://h");
  EXPECT_TRUE(url->isEqual(NSURL::URLWithString("http://h").get()));
  EXPECT_FALSE(url->isEqual(NSURL::URLWithString("http://H").get()));
  EXPECT_FALSE(url->isEqual(nullptr));
}

}  // namespace
}  // namespace quoll::foundation
