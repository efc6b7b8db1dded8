#include "linux/posix/system_log.h"

#include <gtest/gtest.h>

#include <string>

#include "quoll/foundation/text.h"

namespace quoll {
namespace {

TEST(OneLine, EscapesWhatWouldBreakALine) {
  struct Row {
    std::string text;
    std::string expected;
    const char* why;
  };
  const Row rows[] = {
      {"", "", "nothing"},
      {"shareInit “x” ß 漢 😀", "shareInit “x” ß 漢 😀", "text stays"},
      {"a\nb\r\n\tc", "a\\nb\\r\\n\\tc", "line breaks"},
      {"\x1b[31mred", "\\x1b[31mred", "a terminal's escape"},
      {std::string("a\0b\x7f", 4), "a\\x00b\\x7f", "the zero byte and the last control"},
      {"a\u0085b\u009bc", "a\\xc2\\x85b\\xc2\\x9bc", "controls above ASCII"},
      {"a\u2028b\u2029c\u202f", "a\\xe2\\x80\\xa8b\\xe2\\x80\\xa9c\u202f", "separators of lines"},
      {"a\xff\xc3", "a\\xff\\xc3", "bytes that are no text"},
      {"\xc2", "\\xc2", "cut in a character"},
      {"\xe2\x80\n", "\\xe2\\x80\\n", "a break inside a broken character"},
      {"\\n", "\\n", "a backslash stays"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(posix::one_line(row.text), row.expected) << row.why;
  }
}

TEST(OneLine, IsNoLongerThanALineMayBe) {
  constexpr std::size_t kLongest = 4096;
  EXPECT_EQ(posix::one_line(std::string(kLongest, 'a')), std::string(kLongest, 'a'));
  for (const char* piece : {"a", "ß", "漢", "😀", "\n", "\xff", "\u2028"}) {
    std::string text = "x";
    while (text.size() <= kLongest) {
      text += piece;
    }
    const std::string line = posix::one_line(text);
    EXPECT_LE(line.size(), kLongest);
    EXPECT_GT(line.size(), kLongest - 16);
    EXPECT_TRUE(line.ends_with("…"));
    EXPECT_TRUE(foundation::is_utf8(line)) << "no character is cut";
  }
}

TEST(SystemLog, TakesAnything) {
  const auto log = posix::make_system_log("quoll-test");
  log->line("%s %n is no pattern");
  log->line(std::string(1 << 20, '\n'));
}

}  // namespace
}  // namespace quoll
