#include "quoll/foundation/unicode.h"

#include <gtest/gtest.h>

namespace quoll::foundation {
namespace {

using namespace std::string_view_literals;

TEST(AppendCharacter, WritesUtf8) {
  struct Case {
    const char* reason;
    char32_t character;
    std::string_view expected;
  };
  constexpr Case kCases[] = {
      {"the first", 0, "\0"sv},
      {"the last of one byte", 0x7F, "\x7F"},
      {"the first of two", 0x80, "\xC2\x80"},
      {"the last of two", 0x7FF, "\xDF\xBF"},
      {"the first of three", 0x800, "\xE0\xA0\x80"},
      {"before the surrogates", 0xD7FF, "\xED\x9F\xBF"},
      {"after the surrogates", 0xE000, "\xEE\x80\x80"},
      {"the last of three", 0xFFFF, "\xEF\xBF\xBF"},
      {"the first of four", 0x10000, "\xF0\x90\x80\x80"},
      {"every bit of four", 0x1F60B, "\xF0\x9F\x98\x8B"},
      {"the last", 0x10FFFF, "\xF4\x8F\xBF\xBF"},
  };
  for (const Case& row : kCases) {
    std::string out = "x";
    EXPECT_TRUE(append_character(out, row.character)) << row.reason;
    EXPECT_EQ(out, "x" + std::string(row.expected)) << row.reason;
  }
}

TEST(AppendCharacter, RefusesWhatIsNoCharacter) {
  for (const char32_t number : {0xD800U, 0xDBFFU, 0xDC00U, 0xDFFFU, 0x110000U, 0xFFFFFFFFU}) {
    std::string out = "x";
    EXPECT_FALSE(append_character(out, number)) << std::hex << std::uint32_t{number};
    EXPECT_EQ(out, "x");
  }
}

TEST(Utf8OfUtf16, ReadsBothOrders) {
  struct Case {
    const char* reason;
    std::string_view big;
    std::string_view little;
    std::optional<std::string> expected;
  };
  const Case cases[] = {
      {"nothing", "", "", ""},
      {"ASCII", "\0a\0b"sv, "a\0b\0"sv, "ab"},
      {"both bytes", "\x20\xAC", "\xAC\x20", "\xE2\x82\xAC"},
      {"a pair", "\xD8\x3D\xDE\x0B", "\x3D\xD8\x0B\xDE", "\xF0\x9F\x98\x8B"},
      {"the last pair", "\xDB\xFF\xDF\xFF", "\xFF\xDB\xFF\xDF", "\xF4\x8F\xBF\xBF"},
      {"a pair between others", "\0a\xD8\0\xDC\0\0b"sv,
       "a\0\0\xD8\0\xDC"
       "b\0"sv,
       "a\xF0\x90\x80\x80"
       "b"},
      {"a byte-order mark is a character", "\xFE\xFF", "\xFF\xFE", "\xEF\xBB\xBF"},
      {"a byte left over", "\0a\0"sv, "a\0b"sv, std::nullopt},
      {"the first half at the end", "\xD8\x3D", "\x3D\xD8", std::nullopt},
      {"the first half before another", "\xD8\x3D\0a"sv,
       "\x3D\xD8"
       "a\0"sv,
       std::nullopt},
      {"two first halves", "\xD8\x3D\xD8\x3D", "\x3D\xD8\x3D\xD8", std::nullopt},
      {"the second half alone", "\xDE\x0B", "\x0B\xDE", std::nullopt},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(utf8_of_utf16(row.big, ByteOrder::kBigEndian), row.expected) << row.reason;
    EXPECT_EQ(utf8_of_utf16(row.little, ByteOrder::kLittleEndian), row.expected) << row.reason;
  }
}

TEST(FirstCharacter, IsTheOneThatAppendingMakes) {
  for (const char32_t character : {U'\0', U'a', U'\u00E9', U'\u6F22', U'\U0001F600'}) {
    std::string text;
    ASSERT_TRUE(append_character(text, character));
    EXPECT_EQ(first_character(text + "rest"), text);
    EXPECT_EQ(character_of(text), character);
  }
  for (const char* none : {"", "\x80", "\xC3", "\xC3z", "\xE0\x80\x80", "\xFF"}) {
    EXPECT_EQ(first_character(none), "") << none;
  }
}

}  // namespace
}  // namespace quoll::foundation
