#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "quoll/foundation/decimal_digits.h"

namespace quoll {
namespace {

TEST(AsciiNumber, KnowsEveryDecimalDigit) {
  for (UChar32 character = 1; character <= 0x10FFFF; ++character) {
    if (U_IS_SURROGATE(character) || character == 0x2212 || character == 0x200E ||
        character == 0x200F || character == 0x61C) {
      continue;
    }
    std::string text;
    ::icu::UnicodeString(character).toUTF8String(text);
    const std::string expected = u_charType(character) == U_DECIMAL_DIGIT_NUMBER
                                     ? std::to_string(u_charDigitValue(character))
                                     : text;
    ASSERT_EQ(foundation::ascii_number(text), expected) << "U+" << std::hex << character;
  }
}

}  // namespace
}  // namespace quoll
