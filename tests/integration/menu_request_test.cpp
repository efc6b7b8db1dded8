// What KDE's share menu sends, read without the menu.
#include "apps/share/request/menu_request.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace quoll::share {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

std::string cbor_of(const Json& value) {
  const auto bytes = Json::to_cbor(value);
  return {bytes.begin(), bytes.end()};
}

TEST(MenuRequest, FilesAsTheFileManagerNamesThem) {
  const Texts urls{"file:///home/u/docs/a b,c.txt",
                   "file:///home/u/docs/na\xC3\xAFve \xE6\x97\xA5.txt",
                   "file:///tmp/Spectacle.EILkuV/Screenshot_1.png"};
  const auto wanted = read_menu_request(cbor_of({{"mimeType", "text/plain"}, {"urls", urls}}));
  ASSERT_TRUE(wanted);
  EXPECT_EQ(wanted->items, urls);
  EXPECT_FALSE(wanted->text);
  EXPECT_FALSE(wanted->title);
}

TEST(MenuRequest, APageWithItsMarkedText) {
  const auto wanted = read_menu_request(
      cbor_of({{"title", "A page"},
               {"mimeType", "text/html"},
               {"urls", {"https://example.org/?a=1&b=2", "selected: text", "", "and more"}}}));
  ASSERT_TRUE(wanted);
  EXPECT_EQ(wanted->items, Texts{"https://example.org/?a=1&b=2"});
  EXPECT_EQ(wanted->title, "A page");
  EXPECT_EQ(wanted->text, "selected: text\nand more");
}

TEST(MenuRequest, WhatIsAnItem) {
  const Texts items{"/a path/file", "www.example.org", "data:image/png;base64,iVBO", "mailto:a@b.c",
                    "FILE:///x"};
  const auto wanted = read_menu_request(cbor_of({{"urls", items}}));
  ASSERT_TRUE(wanted);
  EXPECT_EQ(wanted->items, items);
  EXPECT_FALSE(wanted->text);
}

TEST(MenuRequest, ADashIsNotStandardInput) {
  const auto wanted = read_menu_request(cbor_of({{"title", "-"}, {"urls", {"-"}}}));
  ASSERT_TRUE(wanted);
  EXPECT_EQ(wanted->title, "- ");
  EXPECT_EQ(wanted->text, "- ");
  EXPECT_TRUE(wanted->items.empty());
}

TEST(MenuRequest, WhatIsNotKnownIsPassedOver) {
  const Json deep = {{"urls", {"https://not-this-one/"}}, {"title", "nor this"}};
  const auto wanted =
      read_menu_request(cbor_of({{"a", nullptr},
                                 {"b", {1, -1, 70000, 5'000'000'000, 1.5, true}},
                                 {"c", Json::binary({1, 2, 3})},
                                 {"d", deep},
                                 {"title", 5},
                                 {"urls", {"https://h/", 7, {"https://deeper/"}}}}));
  ASSERT_TRUE(wanted);
  EXPECT_EQ(wanted->items, Texts{"https://h/"});
  EXPECT_FALSE(wanted->title);
  const auto text_for_urls = read_menu_request(cbor_of({{"urls", "https://h/"}}));
  ASSERT_TRUE(text_for_urls);
  EXPECT_TRUE(text_for_urls->items.empty());
}

TEST(MenuRequest, LengthsThatComeAtTheEnd) {
  // {_ "ur" "ls": [_ "https://h/", (_ "/a", "b")]}, the key and one text in pieces
  const std::string bytes =
      "\xBF\x7F\x62ur\x62ls\xFF\x9F\x6Ahttps://h/\x7F\x62/a\x61"
      "b\xFF\xFF\xFF";
  const auto wanted = read_menu_request(bytes);
  ASSERT_TRUE(wanted);
  EXPECT_EQ(wanted->items, (Texts{"https://h/", "/ab"}));
}

TEST(MenuRequest, HalfAMap) {
  const std::string whole = cbor_of({{"title", "A page"}, {"urls", {"https://h/", "/file"}}});
  ASSERT_TRUE(read_menu_request(whole));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(read_menu_request(whole.substr(0, size))) << size;
  }
}

TEST(MenuRequest, WhatIsNoRequest) {
  const std::string longest("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8);
  const std::string half_of_it("\x80\0\0\0\0\0\0\0", 8);
  struct Row {
    std::string bytes;
    const char* reason;
  };
  const Row rows[] = {
      {"", "nothing"},
      {"\x65hello", "a text"},
      {"\x81\xA0", "a list"},
      {"\x01", "a number"},
      {"\x40", "bytes"},
      {"\xFF", "the end of nothing"},
      {"\xA0\xA0", "two maps"},
      {"\xA1\x61k\xFF", "a value that is an end"},
      {"\xBF\x61k\xFF", "a key without a value"},
      {"\xA1\x61k\x7F\x41z\xFF", "bytes as a piece of a text"},
      {"\xA1\x61k\x7F\x01\xFF", "a number as a piece of a text"},
      {"\xA1\x61k\x7F\x81\x61z\xFF", "a list as a piece of a text"},
      {"\xBB" + half_of_it, "a map of 2^63 pairs"},
      {"\xBB" + longest, "a map of 2^64 - 1 pairs"},
      {std::string("\xBB\x80\0\0\0\0\0\0\1\x61k\1", 12), "a map of 2^63 + 1 pairs, with one"},
      {"\xA1\x64urls\x9B" + half_of_it, "a list of 2^63"},
      {"\xA1\x64urls\x9B" + longest, "a list of 2^64 - 1"},
      {"\xA1\x64urls\x7B" + half_of_it, "a text of 2^63 bytes"},
      {"\xA1\x64urls\x7B" + longest, "a text of 2^64 - 1 bytes"},
      {"\xA1\x61k" + std::string(1'000'000, '\x81') + "\x01", "a list in a list a million times"},
      {"\xA1\x61k" + std::string(1'000'000, '\x9F'), "the same without lengths"},
      {"\xA1\x61k" + std::string(1'000'000, '\x7F'), "pieces in pieces"},
      {"\xA1\x61k\x1C", "what no kind begins with"},
  };
  for (const Row& row : rows) {
    EXPECT_FALSE(read_menu_request(row.bytes)) << row.reason;
  }
}

TEST(MenuRequest, SixteenLevelsAreRead) {
  const auto nested = [](std::size_t lists) {
    return "\xA1\x61k" + std::string(lists, '\x81') + "\x01";
  };
  EXPECT_TRUE(read_menu_request(nested(15)));
  EXPECT_FALSE(read_menu_request(nested(16)));
}

TEST(MenuRequest, AnEmptyMapSharesNothing) {
  const auto wanted = read_menu_request("\xA0");
  ASSERT_TRUE(wanted);
  EXPECT_TRUE(wanted->items.empty());
}

}  // namespace
}  // namespace quoll::share
