#include "quoll/linux/icu/user_locale.h"

#include <gtest/gtest.h>

#include "tests/icu/environment.h"

namespace quoll {
namespace {

TEST(UserLocale, ComesFromTheFirstVariableThatIsSet) {
  struct Row {
    const char* reason;
    std::map<std::string, std::string> variables;
    const char* locale;
  };
  const Row rows[] = {
      {"nothing is set", {}, "en_US_POSIX"},
      {"LANG alone", {{"LANG", "de_DE"}}, "de_DE"},
      {"LC_TIME before LANG", {{"LC_TIME", "fa_IR"}, {"LANG", "de_DE"}}, "fa_IR"},
      {"LC_ALL before both", {{"LC_ALL", "th_TH"}, {"LC_TIME", "fa_IR"}, {"LANG", "de"}}, "th_TH"},
      {"an empty one counts as not set", {{"LC_ALL", ""}, {"LC_TIME", "fa_IR"}}, "fa_IR"},
      {"C counts as set", {{"LC_ALL", "C"}, {"LANG", "de_DE"}}, "en_US_POSIX"},
  };
  for (const Row& row : rows) {
    const test::DateEnvironment environment(row.variables);
    EXPECT_STREQ(icu::user_locale().getName(), row.locale) << row.reason;
  }
}

TEST(UserLocale, IsNamedAsInTheEnvironment) {
  struct Row {
    const char* reason;
    std::string name;
    const char* locale;
  };
  const Row rows[] = {
      {"no name", "", "en_US_POSIX"},
      {"C", "C", "en_US_POSIX"},
      {"C with an encoding", "C.UTF-8", "en_US_POSIX"},
      {"POSIX", "POSIX", "en_US_POSIX"},
      {"only an encoding", ".UTF-8", "en_US_POSIX"},
      {"an encoding does not matter", "de_DE.UTF-8", "de_DE"},
      {"nor does the euro", "de_DE@euro", "de_DE"},
      {"nor do both", "de_DE.ISO-8859-15@euro", "de_DE"},
      {"a modifier may name a script", "sr_RS@latin", "sr_Latn_RS"},
      {"after an encoding as well", "sr_RS.UTF-8@latin", "sr_Latn_RS"},
      {"the others: iqtelif", "tt_RU@iqtelif", "tt_Latn_RU"},
      {"cyrillic", "uz_UZ@cyrillic", "uz_Cyrl_UZ"},
      {"devanagari", "sd_IN@devanagari", "sd_Deva_IN"},
      {"an empty modifier", "de_DE@", "de_DE"},
      {"a language alone", "de", "de"},
      {"a locale that nobody has", "xx_YY", "xx_YY"},
      {"as POSIX names it itself", "en_US_POSIX", "en_US_POSIX"},
      {"not a locale", "///", "en_US_POSIX"},
      {"far too long", std::string(100000, 'x'), "en_US_POSIX"},
      {"not ASCII", "\xFF\xFE", "en_US_POSIX"},
  };
  for (const Row& row : rows) {
    EXPECT_STREQ(icu::locale_named(row.name).getName(), row.locale) << row.reason;
  }
}

TEST(UserLocale, IsLookedAtUpToAHundredBytes) {
  std::string name = "de_DE";
  for (const char variant : std::string("abcdefghij")) {
    name += std::string("_variant") + variant;
  }
  name += "_1abc";
  ASSERT_EQ(name.size(), 100U);
  EXPECT_STREQ(icu::locale_named(name).getLanguage(), "de");
  EXPECT_STREQ(icu::locale_named(name + "d").getName(), "en_US_POSIX") << "one byte more";
}

}  // namespace
}  // namespace quoll
