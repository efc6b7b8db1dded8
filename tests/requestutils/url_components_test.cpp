#include "quoll/requestutils/url_components.h"

#include <gtest/gtest.h>

namespace quoll::RequestUtils {

namespace {

using foundation::NSURL;

TEST(UrlComponents, OfAUrlWithoutEscapesBuildItAgain) {
  for (const std::string_view text :
       {"http://h", "http://h/p", "http://u:p@h:8/a/b;x?q=1#f", "http://h?", "http://h#",
        "http://u:@h", "http://@h", "//h", "file:///tmp/a"}) {
    const auto url = NSURL::URLWithString(text);
    const auto built = URLWithComponents(components(*url));
    const bool has_scheme = url->scheme().has_value();
    ASSERT_NE(built, nullptr) << text;
    EXPECT_EQ(built->absoluteString(), has_scheme ? text : text.substr(2)) << text;
  }
}

TEST(UrlComponents, ComeInTheOrderInWhichTheyAreRead) {
  const auto url = NSURL::URLWithString("http://u:w@h:8/p;x?q#f");
  std::string keys;
  for (const auto& [key, value] : components(*url)) {
    keys += key + " ";
  }
  EXPECT_EQ(keys, "scheme host port user password path parameterString query fragment ");
}

TEST(UrlComponents, AreTheCallersOwn) {
  const auto url = NSURL::URLWithString("http://h/p");
  components(*url).setObject("x", URLHostComponent);
  EXPECT_EQ(components(*url).objectForKey("host"), foundation::Value("h"));
}

}  // namespace

}  // namespace quoll::RequestUtils
