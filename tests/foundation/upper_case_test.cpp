#include "quoll/foundation/upper_case.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "quoll/foundation/unicode.h"

namespace quoll::foundation {

namespace {

std::string oracle(const std::string& text) {
  std::string upper;
  icu::UnicodeString::fromUTF8(text).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
  return upper;
}

TEST(UpperCase, IsUnicodesForEveryCharacter) {
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    std::string text;
    if (append_character(text, c)) {
      ASSERT_EQ(upper_case(text), oracle(text)) << std::hex << static_cast<std::uint32_t>(c);
    }
  }
}

TEST(UpperCase, KeepsWhatIsBetween) {
  const struct {
    std::string_view text;
    std::string_view upper;
    std::string_view reason;
  } kRows[] = {
      {"", "", "nothing"},
      {"post", "POST", "ASCII"},
      {"aZ@[`{z", "AZ@[`{Z", "the neighbours of letters"},
      {"straße", "STRASSE", "one character becomes two"},
      {"ﬃ", "FFI", "one becomes three"},
      {"iı", "II", "the same in every locale"},
      {"aé日😀z", "AÉ日😀Z", "one to four bytes"},
      {"\xFF"
       "a\xC3",
       "\xFF"
       "A\xC3",
       "bytes that are not UTF-8, one of them cut off"},
      {"\xE9"
       "ab",
       "\xE9"
       "AB",
       "a lead that is followed by letters"},
      {"\xC3\xC3\xA9", "\xC3\xC3\x89", "a lead before a character"},
      {std::string_view("a\0b", 3), std::string_view("A\0B", 3), "a zero byte"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(upper_case(row.text), row.upper) << row.reason;
  }
}

}  // namespace

}  // namespace quoll::foundation
