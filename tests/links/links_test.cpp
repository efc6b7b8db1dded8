#include "quoll/linux/links/links.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace quoll::links {
namespace {

using Urls = std::vector<std::string>;

TEST(Links, KnowTopLevelDomains) {
  const auto links = make_links();
  const struct {
    const char* text;
    Urls expected;
    const char* reason;
  } rows[] = {
      {"example.org", {"http://example.org"}, "a generic one"},
      {"EXAMPLE.ORG", {"http://EXAMPLE.ORG"}, "in capitals"},
      {"example.co.uk", {"http://example.co.uk"}, "a country's, under a second level"},
      {"joe@example.org", {"mailto:joe@example.org"}, "of a mail address"},
      {"example.xn--p1ai", {"http://example.xn--p1ai"}, "in its ASCII form"},
      {"example.\xD1\x80\xD1\x84", {"http://example.xn--p1ai"}, "in its own script"},
      {"example.ck", {"http://example.ck"}, "one that the list holds as a wildcard only"},
      {"example.notatld", {}, "unknown"},
      {"main.cpp", {}, "a file ending that is no domain"},
      {"example.test", {}, "kept for tests"},
      {"jones.github", {}, "no rule for every unknown one"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(links->find(row.text), row.expected) << row.reason;
  }
}

TEST(Links, WriteInternationalHostsInTheirAsciiForm) {
  const auto links = make_links();
  const struct {
    const char* text;
    Urls expected;
    const char* reason;
  } rows[] = {
      {"http://B\xC3\x9C"
       "CHER.example/",
       {"http://xn--bcher-kva.example/"},
       "in lower case"},
      {"http://fa\xC3\x9F.de", {"http://xn--fa-hia.de"}, "non-transitional: sharp s stays itself"},
      {"http://\xE4\xBE\x8B\xE3\x81\x88.jp/\xE4\xBE\x8B",
       {"http://xn--r8jz45g.jp/%E4%BE%8B"},
       "the path is percent-encoded"},
      {"joe@b\xC3\xBC"
       "cher.de",
       {"mailto:joe@xn--bcher-kva.de"},
       "of a mail address"},
      {"http://a\xC3\xBC..b/", {"http://xn--a-eha"}, "the host ends before an empty label"},
      {"http://-\xC3\xBC/", {}, "a hyphen in front"},
      {"http://\xC3\xBC-/", {}, "a hyphen behind"},
      {"http://a_\xC3\xBC/", {}, "an underscore"},
      {"http://\xC3\xBC\xFF/", {}, "not UTF-8"},
      {"http://\xD7\x90"
       "a/",
       {},
       "two directions in one label"},
      {"http://a\xE2\x80\x8D"
       "b\xC3\xBC/",
       {},
       "a joiner where nothing joins"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(links->find(row.text), row.expected) << row.text << "\nbecause: " << row.reason;
  }
}

TEST(Links, RefuseAHostThatIsTooLong) {
  std::string host = "\xC3\xBC";
  for (int i = 0; i < 10; ++i) {
    host += "." + std::string(60, 'a');
  }
  EXPECT_EQ(make_links()->find("http://" + host + "/"), Urls{});
}

TEST(Links, ServeManyThreads) {
  const auto links = make_links();
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(links
                      ->find("b\xC3\xBC"
                             "cher.de www.example.org")
                      .size(),
                  2U);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace quoll::links
