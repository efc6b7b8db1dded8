#include "quoll/foundation/url_request.h"

#include <gtest/gtest.h>

namespace quoll::foundation {

namespace {

TEST(UrlRequest, BeginsAsGetWithNothing) {
  const auto request = NSMutableURLRequest::requestWithURL(NSURL::URLWithString("http://h"));
  EXPECT_EQ(request->HTTPMethod(), "GET");
  EXPECT_EQ(request->URL()->absoluteString(), "http://h");
  EXPECT_TRUE(request->allHTTPHeaderFields().empty());
  EXPECT_FALSE(request->HTTPBody());
  EXPECT_EQ(request->class_name(), "NSMutableURLRequest");
  EXPECT_EQ(request->description(), "NSMutableURLRequest http://h");
  EXPECT_EQ(NSMutableURLRequest::requestWithURL(nullptr)->description(),
            "NSMutableURLRequest (null)");
}

TEST(UrlRequest, KeepsAnEmptyBodyApartFromNone) {
  const auto request = NSMutableURLRequest::requestWithURL(nullptr);
  request->setHTTPBody(Bytes());
  ASSERT_TRUE(request->HTTPBody());
  EXPECT_TRUE(request->HTTPBody()->empty());
  request->setHTTPBody(std::nullopt);
  EXPECT_FALSE(request->HTTPBody());
}

TEST(UrlRequest, JoinsValuesOfOneFieldWhateverItsCase) {
  const auto request = NSMutableURLRequest::requestWithURL(nullptr);
  request->addValue("1", "X-Az");
  request->addValue("2", "x-aZ");
  request->addValue("", "X-AZ");
  request->addValue("other", "X-A");
  ASSERT_EQ(request->allHTTPHeaderFields().size(), 2U);
  EXPECT_EQ(*request->valueForHTTPHeaderField("x-az"), "1,2,");
  EXPECT_EQ(request->allHTTPHeaderFields().find("X-AZ")->first, "X-Az");
  EXPECT_EQ(request->valueForHTTPHeaderField("X"), std::nullopt);
}

TEST(UrlRequest, TakesAFieldsOwnValue) {
  const auto request = NSMutableURLRequest::requestWithURL(nullptr);
  const std::string value(1000, 'v');
  request->addValue(value, "X");
  request->addValue(*request->valueForHTTPHeaderField("X"), "X");
  EXPECT_EQ(*request->valueForHTTPHeaderField("X"), value + "," + value);
}

TEST(UrlRequest, FoldsLettersOnly) {
  const struct {
    std::string_view a;
    std::string_view b;
    std::string_view reason;
  } kRows[] = {
      {"@", "`", "before A and a"},
      {"[", "{", "behind Z and z"},
      {"\xC3\x89", "\xC3\xA9", "not ASCII"},
      {"", "a", "the empty name"},
  };
  for (const auto& row : kRows) {
    const HeaderNameOrder less;
    EXPECT_NE(less(row.a, row.b), less(row.b, row.a)) << row.reason;
  }
}

}  // namespace

}  // namespace quoll::foundation
