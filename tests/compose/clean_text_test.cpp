#include "apps/compose/clean_text.h"

#include <gtest/gtest.h>

namespace quoll::compose {
namespace {

TEST(CleanText, ControlCharactersAreFound) {
  struct Row {
    const char* reason;
    std::string text;
    bool clean;
  };
  for (const Row& row : {
           Row{"nothing", "", true},
           Row{"letters", "a \u00FC \u20AC \U0001F600", true},
           Row{"a line feed", "a\nb", false},
           Row{"zero", std::string("a\0b", 3), false},
           Row{"delete", "a\x7F", false},
           Row{"one of two bytes", "\u0085", false},
           Row{"the first that is none", "\u00A0", true},
           Row{"a separator of lines", "a\u2028", false},
           Row{"a separator of paragraphs", "\u2029b", false},
           Row{"its neighbours", "\u2027\u202A", true},
       }) {
    EXPECT_EQ(is_clean(row.text), row.clean) << row.reason;
  }
  EXPECT_TRUE(is_clean("a\n\tb", "\n\t"));
  EXPECT_FALSE(is_clean("a\rb", "\n\t"));
}

TEST(CleanText, ALineIsOneLine) {
  EXPECT_EQ(one_line(" a\r\nb\u2028c\td\u0085"), "a  b c d");
}

TEST(CleanText, LinesAreKept) {
  EXPECT_EQ(clean_lines("a\r\nb\rc\nd\te\u2028f\u0085g"), "a\nb\nc\nd\te\nf\ng");
  EXPECT_EQ(clean_lines(std::string("\0\x1B[\x7F\u009B", 6)), "\u2400\u241B[\u2421\uFFFD");
  EXPECT_TRUE(is_clean(clean_lines("\x01\r\u0080\v\n"), "\n\t"));
}

TEST(CleanText, InvisibleCharactersGo) {
  const std::string visible = "a\u00AC\u00AE\u061B\u200A\u2010\u2029\u202F\u205F\u2070\uFEFE";
  EXPECT_FALSE(has_invisible(visible));
  EXPECT_EQ(without_invisible(visible), visible);
  for (const char* const one : {"\u00AD", "\u061C", "\u200B", "\u200F", "\u202A", "\u202E",
                                "\u2060", "\u2064", "\u2066", "\u2069", "\uFEFF"}) {
    EXPECT_TRUE(has_invisible("a" + std::string(one)));
    EXPECT_EQ(without_invisible(std::string(one) + "a" + one + one + "b" + one), "ab");
  }
}

TEST(CleanText, NothingIsLeftToDecode) {
  EXPECT_EQ(without_encoded_words("=?utf-8?Q?=0A?= a == b"), "= ?utf-8?Q?=0A?= a == b");
  EXPECT_EQ(without_encoded_words("==??"), "== ??");
}

}  // namespace
}  // namespace quoll::compose
