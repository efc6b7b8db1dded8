#include <gtest/gtest.h>

#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/url_parts.h"

namespace quoll::foundation {

namespace {

TEST(ResolveReference, KeepsToTheRfcsExamples) {
  const struct {
    std::string_view reference;
    std::string_view target;
  } kRows[] = {
      // 5.4.1
      {"g:h", "g:h"},
      {"g", "http://a/b/c/g"},
      {"./g", "http://a/b/c/g"},
      {"g/", "http://a/b/c/g/"},
      {"/g", "http://a/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"g?y", "http://a/b/c/g?y"},
      {"#s", "http://a/b/c/d;p?q#s"},
      {"g#s", "http://a/b/c/g#s"},
      {"g?y#s", "http://a/b/c/g?y#s"},
      {";x", "http://a/b/c/;x"},
      {"g;x", "http://a/b/c/g;x"},
      {"g;x?y#s", "http://a/b/c/g;x?y#s"},
      {"", "http://a/b/c/d;p?q"},
      {".", "http://a/b/c/"},
      {"./", "http://a/b/c/"},
      {"..", "http://a/b/"},
      {"../", "http://a/b/"},
      {"../g", "http://a/b/g"},
      {"../..", "http://a/"},
      {"../../", "http://a/"},
      {"../../g", "http://a/g"},
      // 5.4.2
      {"../../../g", "http://a/g"},
      {"../../../../g", "http://a/g"},
      {"/./g", "http://a/g"},
      {"/../g", "http://a/g"},
      {"g.", "http://a/b/c/g."},
      {".g", "http://a/b/c/.g"},
      {"g..", "http://a/b/c/g.."},
      {"..g", "http://a/b/c/..g"},
      {"./../g", "http://a/b/g"},
      {"./g/.", "http://a/b/c/g/"},
      {"g/./h", "http://a/b/c/g/h"},
      {"g/../h", "http://a/b/c/h"},
      {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
      {"g;x=1/../y", "http://a/b/c/y"},
      {"g?y/./x", "http://a/b/c/g?y/./x"},
      {"g?y/../x", "http://a/b/c/g?y/../x"},
      {"g#s/./x", "http://a/b/c/g#s/./x"},
      {"g#s/../x", "http://a/b/c/g#s/../x"},
      {"http:g", "http:g"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(resolve_reference(row.reference, "http://a/b/c/d;p?q"), row.target) << row.reference;
  }
}

TEST(ResolveReference, TakesEveryBase) {
  const struct {
    std::string_view reference;
    std::string_view base;
    std::string_view target;
    std::string_view reason;
  } kRows[] = {
      {"g", "", "g", "nothing"},
      {"", "", "", "nothing to nothing"},
      {"g", "http://a", "http://a/g", "an authority and no path"},
      {"g", "http://", "http:///g", "an empty authority and no path"},
      {"g", "a", "g", "a path without a slash"},
      {"./g", "a", "g", "here, in a path without a slash"},
      {"../g", "a", "g", "up, from a path without a slash"},
      {"..", "a", "", "up, and nothing else"},
      {".", "a", "", "here, and nothing else"},
      {"g/..", "a/", "a/", "down and up again, in a path without a slash in front"},
      {"g/..", "a", "/", "down and up again, in a path without any slash"},
      {"b/../g", "a/", "a/g", "down and up, in a path without a slash in front"},
      {"g", "mailto:x", "mailto:g", "a rest that is no path"},
      {"//g", "mailto:x", "mailto://g", "only the scheme is left"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(resolve_reference(row.reference, row.base), row.target) << row.reason;
  }
}

TEST(ResolveReference, TakesTimeInProportionToTheText) {
  std::string reference;
  for (int i = 0; i < 200000; ++i) {
    reference += i % 2 == 0 ? "a/" : "../";
  }
  EXPECT_EQ(resolve_reference(reference, "http://h/b/"), "http://h/b/");
}

TEST(RelativeUrl, KeepsTextAndBase) {
  const auto base = NSURL::URLWithString("http://u:p@h:8/a/b?q#f");
  const auto url = NSURL::URLWithString("../c;x?y#z", base);
  ASSERT_NE(url, nullptr);
  EXPECT_EQ(url->relativeString(), "../c;x?y#z");
  EXPECT_EQ(url->baseURL(), base);
  EXPECT_EQ(url->absoluteString(), "http://u:p@h:8/c;x?y#z");
  EXPECT_EQ(url->description(), "http://u:p@h:8/c;x?y#z");
  EXPECT_EQ(url->user(), "u");
  EXPECT_EQ(url->port(), 8);
  EXPECT_EQ(url->path(), "/c");
  EXPECT_EQ(file_system_path(url), std::nullopt) << "no file URL";
  EXPECT_EQ(url->parameterString(), "x");
  EXPECT_EQ(URLByAppendingPathComponent(url, "d")->absoluteString(), "http://u:p@h:8/c;x/d?y#z");
}

TEST(RelativeUrl, WithoutABaseIsTheTextItself) {
  const auto url = NSURL::URLWithString("a/../b", nullptr);
  ASSERT_NE(url, nullptr);
  EXPECT_EQ(url->absoluteString(), "a/../b");
  EXPECT_EQ(url->baseURL(), nullptr);
  EXPECT_TRUE(url->isEqual(NSURL::URLWithString("a/../b").get()));
  EXPECT_EQ(NSURL::URLWithString("", nullptr), nullptr);
}

TEST(RelativeUrl, IsEqualByTextAndBase) {
  const auto made = [](std::string_view text, const char* base) {
    return NSURL::URLWithString(text, NSURL::URLWithString(base));
  };
  const auto url = made("g", "http://h/");
  EXPECT_TRUE(url->isEqual(made("g", "http://h/").get()));
  EXPECT_FALSE(url->isEqual(made("g", "http://i/").get()));
  EXPECT_FALSE(url->isEqual(made("i", "http://h/").get()));
  EXPECT_FALSE(url->isEqual(made("g", "").get())) << "a base and none";
  EXPECT_FALSE(made("g", "")->isEqual(url.get())) << "none and a base";
  EXPECT_FALSE(url->isEqual(NSURL::URLWithString("http://h/g").get()));
}

}  // namespace

}  // namespace quoll::foundation
