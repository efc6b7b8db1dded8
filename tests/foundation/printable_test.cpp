#include "quoll/foundation/printable.h"

#include <gtest/gtest.h>

#include "quoll/foundation/text.h"

namespace quoll::foundation {
namespace {

TEST(Printable, EscapesWhatATerminalWouldObey) {
  struct Row {
    const char* reason;
    std::string bytes;
    std::string shown;
  };
  const Row rows[] = {
      {"nothing", "", ""},
      {"plain text", "a b.txt", "a b.txt"},
      {"other scripts", "grüß “€” 漢 😀", "grüß “€” 漢 😀"},
      {"line breaks", "a\nb\r\n\tc", "a\\nb\\r\\n\\tc"},
      {"an escape sequence", "\x1B[2J", "\\x1B[2J"},
      {"the zero byte and the last control", std::string("a\0b\x7F", 4), "a\\x00b\\x7F"},
      {"the first that is no control", " ", " "},
      {"the control characters of eight bits", "a\u0080b\u009Fc", "a\\u0080b\\u009Fc"},
      {"the blank after them", "\u00A0", "\u00A0"},
      {"separators of lines", "a\u2028b\u2029c", "a\\u2028b\\u2029c"},
      {"what turns the direction of writing", "a\u202Egpj.exe", "a\\u202Egpj.exe"},
      {"the first and the last of them", "\u202A\u202D\u200E\u200F",
       "\\u202A\\u202D\\u200E\\u200F"},
      {"isolates", "\u2066x\u2069", "\\u2066x\\u2069"},
      {"their neighbours", "\u200D\u2010\u2027\u202F\u2065\u206A",
       "\u200D\u2010\u2027\u202F\u2065\u206A"},
      {"no UTF-8", "bad\xFF\xC3", "bad%FF%C3"},
      {"a break inside a broken character", "\xE2\x80\n", "%E2%80\\n"},
      {"a backslash stays", "\\n", "\\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(printable(row.bytes), row.shown) << row.reason;
  }
}

TEST(Printable, CutsBetweenTwoCharacters) {
  EXPECT_EQ(printable("abcdef", 6), "abcdef");
  EXPECT_EQ(printable("abcdefg", 6), "abc…");
  EXPECT_EQ(printable("aé漢z", 6), "aé…") << "seven bytes";
  constexpr std::size_t kLongest = 4096;
  for (const char* piece : {"a", "ß", "漢", "😀", "\n", "\xFF", "\u2028"}) {
    std::string text = "x";
    while (text.size() <= kLongest) {
      text += piece;
    }
    const std::string line = printable(text, kLongest);
    EXPECT_LE(line.size(), kLongest);
    EXPECT_GT(line.size(), kLongest - 16);
    EXPECT_TRUE(line.ends_with("…"));
    EXPECT_TRUE(is_utf8(line)) << "no character is cut";
  }
}

}  // namespace
}  // namespace quoll::foundation
