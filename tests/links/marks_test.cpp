#include "quoll/linux/links/marks.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <string>
#include <string_view>

namespace quoll::links {
namespace {

std::string utf8(UChar32 c) {
  std::string out;
  if (c < 0x800) {
    out += static_cast<char>(0xC0 | c >> 6);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | c >> 12);
    out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | c >> 18);
    out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
    out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
  }
  return out + static_cast<char>(0x80 | (c & 0x3F));
}

bool is_white_space_or_quote(UChar32 c) {
  constexpr auto kSeparators = static_cast<std::uint32_t>(U_GC_Z_MASK);
  return c == 0x85 || (U_MASK(u_charType(c)) & kSeparators) != 0 ||
         u_hasBinaryProperty(c, UCHAR_QUOTATION_MARK) != 0;
}

TEST(MarkAt, StopsAtUnicodesSeparatorsAndQuotationMarks) {
  for (UChar32 c = 0x80; c <= 0x10FFFF; ++c) {
    const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
    const MarkAt found = surrogate ? MarkAt{} : mark_at(utf8(c), 0);
    EXPECT_EQ(found.mark == Mark::kStop, !surrogate && is_white_space_or_quote(c)) << std::hex << c;
    EXPECT_EQ(found.length, found.mark == Mark::kNone ? 0 : utf8(c).size()) << std::hex << c;
  }
}

TEST(MarkAt, KnowsThePunctuationThatNoHostHolds) {
  const struct {
    UChar32 first, last;
    const char* reason;
  } ranges[] = {
      {0x2010, 0x2017, "hyphens and dashes"},
      {0x2020, 0x2027, "daggers, bullets, the ellipsis"},
      {0x202A, 0x202E, "what turns the direction of writing"},
      {0x2030, 0x2038, "per mille, primes"},
      {0x203B, 0x205E, "reference marks and other general punctuation"},
      {0x3001, 0x3003, "ideographic comma and full stop"},
      {0x3008, 0x300B, "angle brackets"},
      {0x3010, 0x301C, "lenticular and tortoise-shell brackets"},
      {0xFF01, 0xFF01, "full-width exclamation mark"},
      {0xFF03, 0xFF06, "full-width signs"},
      {0xFF08, 0xFF0F, "full-width brackets, comma, full stop, slash"},
      {0xFF1A, 0xFF20, "full-width colon to at sign"},
  };
  for (UChar32 c = 0x80; c <= 0xFFFF; ++c) {
    const char* reason = nullptr;
    for (const auto& range : ranges) {
      reason = c >= range.first && c <= range.last ? range.reason : reason;
    }
    const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
    EXPECT_EQ(!surrogate && mark_at(utf8(c), 0).mark == Mark::kPunctuation, reason != nullptr)
        << std::hex << c << " " << (reason == nullptr ? "" : reason);
  }
}

TEST(MarkAt, SeesNoneInBrokenBytes) {
  const struct {
    std::string text;
    const char* reason;
  } rows[] = {
      {"\xE2", "cut after the first byte"},
      {"\xE2\x80", "cut after the second byte"},
      {"\xC2", "cut"},
      {"\xC2 ", "not continued: a blank is a blank"},
      {"\xE2 \x80", "not continued in the middle"},
      {"\xE2\x80 ", "not continued at the end"},
      {"\xE3\xC0\x80", "a first byte where a continuation belongs"},
      {"\x80\x80\x80", "continuations only"},
      {"\xC2\x84", "before next line"},
      {"\xFF\xFF", "never UTF-8"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(mark_at(row.text, 0).mark, Mark::kNone) << row.reason;
    EXPECT_EQ(mark_at(row.text, 0).length, 0U) << row.reason;
  }
}

TEST(MarkAt, SeesNothingBehindTheTextsEnd) {
  constexpr std::string_view kQuote = "\xE2\x80\x9D";
  EXPECT_EQ(mark_at(kQuote, 0).mark, Mark::kStop);
  for (const std::size_t length : {1U, 2U}) {
    EXPECT_EQ(mark_at(kQuote.substr(0, length), 0).mark, Mark::kNone) << length;
  }
}

TEST(MarkAt, LooksAtItsPositionOnly) {
  const std::string text = "a\xE2\x80\x9D\xE3\x80\x81z\xC2\xA0";
  EXPECT_EQ(mark_at(text, 1).mark, Mark::kStop);
  EXPECT_EQ(mark_at(text, 2).mark, Mark::kNone) << "inside a character";
  EXPECT_EQ(mark_at(text, 4).mark, Mark::kPunctuation);
  EXPECT_EQ(mark_at(text, 8).mark, Mark::kStop) << "at the very end";
  EXPECT_EQ(mark_at(text, 8).length, 2U);
}

}  // namespace
}  // namespace quoll::links
