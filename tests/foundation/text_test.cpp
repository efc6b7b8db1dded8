#include "quoll/foundation/text.h"

#include <gtest/gtest.h>

#include "quoll/foundation/error.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"

namespace quoll::foundation {
namespace {

TEST(WholeCharacters, NoneIsCut) {
  const std::string text = "a\u00E9\u6F22\U0001F600z";  // one to four bytes, and one
  const std::size_t ends[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
  for (std::size_t length = 0; length < std::size(ends); ++length) {
    EXPECT_EQ(whole_characters(text, length), text.substr(0, ends[length])) << length;
    EXPECT_EQ(whole_characters(text.substr(0, length)), text.substr(0, ends[length])) << length;
  }
}

TEST(WholeCharacters, OtherBytesStandForThemselves) {
  EXPECT_EQ(whole_characters("a\xFF"), "a") << "it may begin one";
  EXPECT_EQ(whole_characters("a\x80\x80"), "a\x80\x80") << "they belong to none";
  EXPECT_EQ(whole_characters(std::string_view("\x80\x80\x80\x80\x80", 5)).size(), 5U);
  EXPECT_EQ(whole_characters(""), "");
}

TEST(AsciiLowerCase, OtherBytesStay) {
  EXPECT_EQ(ascii_lower_case("AZaz@[`{09\u00C9"), "azaz@[`{09\u00C9");
}

TEST(Substring, AnswersThePiece) {
  EXPECT_EQ(substring("abcdef", {1, 3}), "bcd");
  EXPECT_EQ(substring("abc", {3, 0}), "");
  EXPECT_EQ(substring("abc", {0, 3}), "abc");
}

TEST(Substring, RaisesOutsideTheText) {
  for (const Range range : {Range{0, 4}, Range{3, 1}, Range{4, 0}, Range{1, -1}}) {
    try {
      static_cast<void>(substring("abc", range));
      ADD_FAILURE() << range.location << " " << range.length;
    } catch (const NSException& exception) {
      EXPECT_EQ(exception.name(), "NSRangeException");
      EXPECT_FALSE(exception.reason().empty());
    }
  }
}

TEST(Trim, DropsEverySortOfWhiteSpaceAtBothEnds) {
  const char* const kWhite[] = {"\t",           "\n",           "\v",
                                "\f",           "\r",           " ",
                                "\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80",
                                "\xE2\x80\x80", "\xE2\x80\x8A", "\xE2\x80\xA8",
                                "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F",
                                "\xE3\x80\x80"};
  for (const std::string white : kWhite) {
    EXPECT_EQ(trim(white + "a" + white + "b" + white), "a" + white + "b");
    EXPECT_EQ(trim(white + white), "");
  }
}

TEST(Trim, KeepsWhatIsNoWhiteSpace) {
  // U+200B (zero width space), U+FEFF, U+001F, U+180E, and bytes that are no characters.
  for (const std::string kept : {"\xE2\x80\x8B", "\xEF\xBB\xBF", "\x1F", "\xE1\xA0\x8E", "\xA0",
                                 "\x85", "\xC2", "\xE2\x80", "\x08", "\x0E", "\xE2\x80\xB0"}) {
    EXPECT_EQ(trim(kept), kept);
    EXPECT_EQ(trim(" " + kept + " "), kept);
  }
  EXPECT_EQ(trim(""), "");
}

TEST(IsUtf8, AcceptsWellFormedText) {
  for (const std::string_view text :
       {"", "plain", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
        "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF",
        "longer than eight bytes and then \xC3\xA9 and more"}) {
    EXPECT_TRUE(is_utf8(text)) << text;
  }
}

TEST(IsUtf8, RefusesEverythingElse) {
  struct Case {
    const char* reason;
    std::string_view bytes;
  };
  constexpr Case kCases[] = {
      {"a continuation alone", "\x80"},
      {"cut after the first of two", "\xC3"},
      {"cut after the second of three", "\xE2\x82"},
      {"cut after the third of four", "\xF0\x9F\x98"},
      {"overlong of two", "\xC0\xAF"},
      {"overlong of two", "\xC1\xBF"},
      {"overlong of three", "\xE0\x9F\xBF"},
      {"overlong of four", "\xF0\x8F\xBF\xBF"},
      {"first surrogate", "\xED\xA0\x80"},
      {"last surrogate", "\xED\xBF\xBF"},
      {"above the last character", "\xF4\x90\x80\x80"},
      {"a lead that leads nothing", "\xF5\x80\x80\x80"},
      {"never a byte of text", "\xFF"},
      {"a letter where a continuation is wanted", "\xC3(\xC3\xA9"},
      {"a bad third byte", "\xE2\x82("},
      {"a bad fourth byte", "\xF0\x9F\x98("},
      {"behind eight good bytes", "12345678\xFF"},
      {"inside the first eight",
       "123\xFF"
       "5678"},
  };
  for (const Case& row : kCases) {
    EXPECT_FALSE(is_utf8(row.bytes)) << row.reason;
  }
}

/// The table of the standard, row by row.
bool is_one_character(const std::string& bytes) {
  struct Row {
    unsigned lead_low, lead_high, second_low, second_high;
    std::size_t length;
  };
  constexpr Row kRows[] = {
      {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
      {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
  };
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  for (const Row& row : kRows) {
    if (at(0) < row.lead_low || at(0) > row.lead_high || bytes.size() != row.length) {
      continue;
    }
    bool good = row.length == 1 || (at(1) >= row.second_low && at(1) <= row.second_high);
    for (std::size_t i = 2; i < row.length; ++i) {
      good = good && at(i) >= 0x80 && at(i) <= 0xBF;
    }
    return good;
  }
  return false;
}

TEST(IsUtf8, AgreesWithTheStandardAtEveryBound) {
  constexpr unsigned kBounds[] = {0x00, 0x7F, 0x80, 0x81, 0x8F, 0x90,
                                  0x9F, 0xA0, 0xBE, 0xBF, 0xC0, 0xFF};
  std::string bytes;
  const auto check = [&] { EXPECT_EQ(is_utf8(bytes), is_one_character(bytes)) << bytes.size(); };
  for (unsigned lead = 0; lead < 256; ++lead) {
    bytes.assign(1, static_cast<char>(lead));
    check();
    if (lead < 0x80) {
      continue;  // what follows it is a character of its own
    }
    for (const unsigned second : kBounds) {
      bytes.resize(1);
      bytes += static_cast<char>(second);
      check();
      for (const unsigned third : kBounds) {
        bytes.resize(2);
        bytes += static_cast<char>(third);
        if (lead >= 0xE0) {
          check();
        }
        for (const unsigned fourth : kBounds) {
          bytes.resize(3);
          bytes += static_cast<char>(fourth);
          if (lead >= 0xF0) {
            check();
          }
        }
      }
    }
  }
}

TEST(Utf8WithEscapes, EscapesBadBytesOnly) {
  EXPECT_EQ(utf8_with_escapes("r\xC3\xA9sum\xE9.txt"), "r\xC3\xA9sum%E9.txt");
  EXPECT_EQ(utf8_with_escapes("\xFF\xFE"), "%FF%FE");
  EXPECT_EQ(utf8_with_escapes("100%"), "100%");
  EXPECT_EQ(utf8_with_escapes("\xE2\x82"), "%E2%82");
  EXPECT_EQ(utf8_with_escapes(""), "");
}

TEST(Format, FillsTheSlotsInOrder) {
  EXPECT_EQ(format("%@ and %@", "a", std::string("b")), "a and b");
  EXPECT_EQ(format("%@_%lu", "photo", 12), "photo_12");
  EXPECT_EQ(format("%i", std::int64_t{-3}), "-3");
  EXPECT_EQ(format("%@", "%@"), "%@") << "what is filled in is not looked at again";
  EXPECT_EQ(format("100% %@ %", "x"), "100% x %") << "a lone percent sign stays";
  EXPECT_EQ(format("%@", std::optional<std::string>()), "(null)");
  EXPECT_EQ(format("%@", Value()), "(null)");
  EXPECT_EQ(format("%@", std::shared_ptr<Object>()), "(null)");
}

TEST(Format, CountsTheSlotsOfATranslatedPattern) {
  EXPECT_EQ(format_translated("%@ von %lu", "a", 2), "a von 2");
  EXPECT_THROW(static_cast<void>(format_translated("%@", "a", 2)), NSException);
  EXPECT_THROW(static_cast<void>(format_translated("%@ %@ %@", "a", 2)), NSException);
  EXPECT_EQ(slots_in("100% %@ %lu%i%"), 3U);
  EXPECT_EQ(slots_in(""), 0U);
}

TEST(ErrorText, NamesDomainCodeAndDetails) {
  EXPECT_EQ((Error{"D", 7, "", {}}.description()), "Error Domain=D Code=7");
  EXPECT_EQ((Error{"D", 7, "Why.", {{"A", "1"}, {"B", "2"}}}.description()),
            "Error Domain=D Code=7 \"Why.\" UserInfo={A=1, B=2}");
  EXPECT_EQ(file_error(ENOENT, "/x/a.txt", true).description(),
            "Error Domain=NSCocoaErrorDomain Code=4 \"“a.txt” doesn’t exist.\" "
            "UserInfo={NSFilePath=/x/a.txt, NSUnderlyingError={Error Domain=NSPOSIXErrorDomain "
            "Code=2 \"No such file or directory\"}}");
}

TEST(ErrorText, HoldsWhatLiesBeneath) {
  const Error error = file_error(ENOENT, "/x/a.txt", true);
  ASSERT_NE(error.underlying(), nullptr);
  EXPECT_EQ(error.underlying()->domain, NSPOSIXErrorDomain);
  EXPECT_EQ(error.underlying()->code, ENOENT);
  EXPECT_EQ(error.detail(NSUnderlyingErrorKey), nullptr) << "it is no text";
  EXPECT_EQ(error.underlying()->underlying(), nullptr);
  EXPECT_EQ(quoll_error(kNotOpenedError, "Why.").description(),
            "Error Domain=QuollErrorDomain Code=5 \"Why.\"");
}

TEST(FileError, SaysWhatHappenedInOneSentence) {
  struct Case {
    int number;
    bool writing;
    const char* text;
  };
  constexpr Case kCases[] = {
      {ENOENT, true, "“a.txt” doesn’t exist."},
      {ENOENT, false, "The file “a.txt” couldn’t be opened because there is no such file."},
      {EACCES, false, "You don’t have permission to access “a.txt”."},
      {EPERM, true, "You don’t have permission to access “a.txt”."},
      {EEXIST, true, "“a.txt” already exists."},
      {ENOSPC, true, "“a.txt” couldn’t be written because there is not enough space."},
      {EROFS, true, "“a.txt” couldn’t be written because the volume is read only."},
      {EIO, true, "The operation on “a.txt” couldn’t be completed."},
      {EIO, false, "The operation on “a.txt” couldn’t be completed."},
  };
  for (const Case& row : kCases) {
    EXPECT_EQ(file_error(row.number, "/x/a.txt", row.writing).text, row.text) << row.number;
  }
}

TEST(FileError, TellsTheKindsOfFailureApart) {
  struct Case {
    int number;
    bool writing;
    int code;
  };
  constexpr Case kCases[] = {
      {ENOENT, true, 4},    {ENOENT, false, 260}, {ENOTDIR, true, 4},  {EACCES, true, 513},
      {EACCES, false, 257}, {EPERM, true, 513},   {EEXIST, true, 516}, {ENOTEMPTY, true, 516},
      {ENOSPC, true, 640},  {EDQUOT, true, 640},  {EROFS, true, 642},  {EIO, true, 512},
      {EIO, false, 256},
  };
  for (const Case& row : kCases) {
    const Error error = file_error(row.number, "/a", row.writing);
    EXPECT_EQ(error.code, row.code) << row.number;
    EXPECT_EQ(error.domain, "NSCocoaErrorDomain");
    EXPECT_FALSE(error.text.empty());
    ASSERT_NE(error.detail("NSFilePath"), nullptr);
    EXPECT_EQ(*error.detail("NSFilePath"), "/a");
    EXPECT_EQ(error.detail("NSOther"), nullptr);
  }
}

}  // namespace
}  // namespace quoll::foundation
