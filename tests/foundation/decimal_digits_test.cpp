#include "quoll/foundation/decimal_digits.h"

#include <gtest/gtest.h>

namespace quoll::foundation {
namespace {

TEST(AsciiNumber, WritesANumberOfAnyScriptInAscii) {
  struct Row {
    const char* reason;
    const char* text;
    const char* number;
  };
  const Row rows[] = {
      {"nothing", "", ""},
      {"ASCII stays", "2024-03/07 x", "2024-03/07 x"},
      {"what stands before 0 and after 9 stays", "/09:", "/09:"},
      {"a control character before the first zero stays", "\x01", "\x01"},
      {"Arabic digits, of two bytes", "٢٠٢٤٠٣٠٧", "20240307"},
      {"Persian digits", "۱۴۰۲۱۲۱۷", "14021217"},
      {"Devanagari digits, of three bytes", "०१९", "019"},
      {"digits of four bytes", "\U0001D7D8\U0001D7E1\U0001D7E2", "090"},
      {"the last digits that there are", "\U0001FBF0\U0001FBF9", "09"},
      {"what follows a nine stays", "\U0001FBFA\u066A", "\U0001FBFA\u066A"},
      {"a minus sign, after a mark of direction", "\u200E\u2212\u06F6\u06F2\u06F1", "-621"},
      {"the other marks of direction", "\u200F\u061C-1", "-1"},
      {"letters and signs of other scripts stay", "é–中", "é–中"},
      {"a byte that is not UTF-8 stays", "\xFF\xD9\xA1",
       "\xFF"
       "1"},
      {"half a digit stays", "1\xD9", "1\xD9"},
      {"half a digit before a whole one stays", "\xE0\xA5\xD9\xA1",
       "\xE0\xA5"
       "1"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ascii_number(row.text), row.number) << row.reason;
  }
}

}  // namespace
}  // namespace quoll::foundation
