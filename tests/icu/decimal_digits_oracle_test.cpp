#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "quoll/foundation/decimal_digits.h"

namespace quoll {
namespace {

/// Whether the version of Unicode that the table was made from has the character: digits of later
/// ones stay as they are, on every system.
bool is_of_the_tables_unicode(UChar32 character) {
  constexpr int kVersion = 15;
  UVersionInfo age;
  u_charAge(character, age);
  return age[0] <= kVersion;
}

TEST(AsciiNumber, KnowsEveryDecimalDigit) {
  for (UChar32 character = 1; character <= 0x10FFFF; ++character) {
    if (U_IS_SURROGATE(character) || character == 0x2212 || character == 0x200E ||
        character == 0x200F || character == 0x61C) {
      continue;
    }
    std::string text;
    ::icu::UnicodeString(character).toUTF8String(text);
    const bool digit =
        u_charType(character) == U_DECIMAL_DIGIT_NUMBER && is_of_the_tables_unicode(character);
    const std::string expected = digit ? std::to_string(u_charDigitValue(character)) : text;
    ASSERT_EQ(foundation::ascii_number(text), expected) << "U+" << std::hex << character;
  }
}

}  // namespace
}  // namespace quoll
