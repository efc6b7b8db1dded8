#include "quoll/foundation/upper_case.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "quoll/foundation/unicode.h"
#include "quoll/foundation/upper_case_table.h"

namespace quoll::foundation {

namespace {

std::string oracle(const std::string& text) {
  std::string upper;
  icu::UnicodeString::fromUTF8(text).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
  return upper;
}

/// Whether the table's version of Unicode has every character of the text. What came later stays as
/// it is: a letter that got an upper case since then, too.
bool is_of_the_tables_unicode(const std::string& text) {
  const auto characters = icu::UnicodeString::fromUTF8(text);
  for (int i = 0; i < characters.length(); i = characters.moveIndex32(i, 1)) {
    UVersionInfo age;
    u_charAge(characters.char32At(i), age);
    if (age[0] > kUpperCaseUnicode) {
      return false;
    }
  }
  return true;
}

TEST(UpperCase, IsUnicodesForEveryCharacter) {
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    std::string text;
    if (append_character(text, c)) {
      const std::string upper = oracle(text);
      ASSERT_EQ(upper_case(text), is_of_the_tables_unicode(upper) ? upper : text)
          << std::hex << static_cast<std::uint32_t>(c);
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
