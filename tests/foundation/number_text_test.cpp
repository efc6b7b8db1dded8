#include "quoll/foundation/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quoll::foundation {
namespace {

TEST(IntegerOfText, ReadsTheLeadingDigits) {
  struct Case {
    const char* reason;
    std::string_view text;
    std::int64_t expected;
  };
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr Case kCases[] = {
      {"digits", "12", 12},
      {"digits up to another character", "12ab", 12},
      {"no digits", "abc", 0},
      {"nothing", "", 0},
      {"leading white space of every sort",
       " \t\n\xC2\xA0\xE3\x80\x80"
       "7",
       7},
      {"minus", "-5", -5},
      {"plus", "+5", 5},
      {"only one sign", "--5", 0},
      {"two different signs", "+-5", 0},
      {"no white space after the sign", "- 5", 0},
      {"a sign alone", "-", 0},
      {"no hexadecimal", "0x10", 0},
      {"no exponent", "1e3", 1},
      {"a fraction is cut", "3.9", 3},
      {"no grouping", "1,000", 1},
      {"the largest", "9223372036854775807", kMax},
      {"saturates above", "9223372036854775808", kMax},
      {"far above", "99999999999999999999999", kMax},
      {"the smallest", "-9223372036854775808", kMin},
      {"saturates below", "-9223372036854775809", kMin},
      {"other digits are no digits", "\xD9\xA1\xD9\xA2", 0},
  };
  for (const Case& row : kCases) {
    EXPECT_EQ(integer_of_text(row.text), row.expected) << row.reason;
  }
}

TEST(BooleanOfText, LooksAtTheFirstMeaningfulCharacter) {
  for (const auto text : {"1", "9", "y", "Yes", "t", "TRUE", " \t1", "+1", "-1", "007", "-0y"}) {
    EXPECT_TRUE(boolean_of_text(text)) << text;
  }
  for (const auto text : {"", "0", "0.5", "on", "no", "false", "--1", "000", "- 1", "x1"}) {
    EXPECT_FALSE(boolean_of_text(text)) << text;
  }
}

TEST(FloatOfText, ReadsTheLongestDecimalPrefixInSinglePrecision) {
  struct Case {
    const char* reason;
    std::string_view text;
    float expected;
  };
  constexpr float kLargest = std::numeric_limits<float>::max();
  const Case cases[] = {
      {"an integer", "86400", 86400.0F},
      {"rounded to a multiple of 128", "1699999999", 1700000000.0F},
      {"rounded to even", "16777217", 16777216.0F},
      {"a fraction", "0.5", 0.5F},
      {"no digit before the point", ".5", 0.5F},
      {"no digit after the point", "5.", 5.0F},
      {"an exponent behind a bare point", "5.e2", 500.0F},
      {"only a point", ".", 0.0F},
      {"a point without digits", ".e2", 0.0F},
      {"only one sign", "--5", 0.0F},
      {"an exponent", "1e3", 1000.0F},
      {"an exponent with a plus", "1e+3", 1000.0F},
      {"a signed exponent", "15E-1x", 1.5F},
      {"an exponent without digits is not read", "2e", 2.0F},
      {"nor one with a sign only", "2e+", 2.0F},
      {"white space and sign", " -2.5", -2.5F},
      {"no hexadecimal", "0x10", 0.0F},
      {"no infinity", "inf", 0.0F},
      {"no infinity behind a point", ".inf", 0.0F},
      {"no NaN", "nan", 0.0F},
      {"a comma is no point", "1,5", 1.0F},
      {"nothing", "", 0.0F},
      {"beyond single precision", "1e39", kLargest},
      {"beyond it below", "-1e39", -kLargest},
      {"beyond double precision", "1e999", kLargest},
      {"beyond double precision, in capitals", "1E999", kLargest},
      {"beyond double precision, beginning with a nine", "9e999", kLargest},
      {"beyond double precision below", "-1e999", -kLargest},
      {"an exponent beyond everything", "1e99999999999999999999", kLargest},
      {"too small", "1e-999", 0.0F},
      {"too small an exponent", "1e-99999999999999999999", 0.0F},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(float_of_text(row.text), row.expected) << row.reason;
  }
  EXPECT_EQ(float_of_text("1" + std::string(400, '0')), kLargest) << "many digits, no exponent";
  EXPECT_EQ(float_of_text("0." + std::string(400, '0') + "1"), 0.0F) << "many zeros, no exponent";
  EXPECT_EQ(float_of_text("0." + std::string(400, '0') + "1e800"), kLargest)
      << "an exponent that outweighs the zeros";
}

TEST(SinglePrecision, StaysFinite) {
  EXPECT_EQ(single_precision(1e300), std::numeric_limits<float>::max());
  EXPECT_EQ(single_precision(-std::numeric_limits<double>::infinity()),
            std::numeric_limits<float>::lowest());
  EXPECT_TRUE(std::isnan(single_precision(std::nan(""))));
  EXPECT_EQ(single_precision(1699999999), 1700000000.0F);
}

TEST(TextOfReal, IsTheShortestThatReadsBack) {
  EXPECT_EQ(text_of_real(0.5), "0.5");
  EXPECT_EQ(text_of_real(1), "1");
  EXPECT_EQ(text_of_real(1e20), "1e+20");
  EXPECT_EQ(text_of_real(0.1), "0.1");
  EXPECT_EQ(text_of_real(-2.25), "-2.25");
}

}  // namespace
}  // namespace quoll::foundation
