#include "quoll/linux/icu/user_locale.h"

#include <unicode/localebuilder.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace quoll::icu {

namespace {

constexpr const char* kPosix = "en_US_POSIX";
/// In bytes. No name of a locale is longer.
constexpr std::size_t kLongest = 100;

/// The script that a modifier such as "latin" stands for. None for other modifiers: they do not
/// change how dates are written.
std::string_view script_of(std::string_view modifier) {
  struct Script {
    std::string_view modifier;
    std::string_view script;
  };
  constexpr Script kScripts[] = {
      {"latin", "Latn"}, {"iqtelif", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}};
  for (const Script& one : kScripts) {
    if (one.modifier == modifier) {
      return one.script;
    }
  }
  return {};
}

/// What a country counts its days by.
const char* calendar_of(std::string_view country) {
  if (country == "AF" || country == "IR") {
    return "persian";
  }
  if (country == "SA") {
    return "islamic-umalqura";
  }
  return country == "TH" ? "buddhist" : "gregorian";
}

}  // namespace

::icu::Locale locale_named(std::string_view name) {
  const std::string_view whole = name.substr(0, name.find('@'));
  const std::string_view modifier = name.substr(std::min(name.size(), whole.size() + 1));
  const std::string base(whole.substr(0, whole.find('.')));
  if (base.empty() || base.size() > kLongest || base == "C" || base == "POSIX") {
    return {kPosix};
  }
  UErrorCode status = U_ZERO_ERROR;
  const std::string_view script = script_of(modifier);
  ::icu::Locale locale = ::icu::LocaleBuilder()
                             .setLocale(::icu::Locale::createFromName(base.c_str()))
                             .setScript({script.data(), static_cast<std::int32_t>(script.size())})
                             .build(status);
  return U_FAILURE(status) != 0 || locale.isBogus() != 0 ? ::icu::Locale(kPosix) : locale;
}

::icu::Locale user_locale() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') {
      return locale_named(value);
    }
  }
  return locale_named("");
}

void hold_calendar(::icu::Locale& locale, UErrorCode& status) {
  constexpr const char* kCalendar = "calendar";
  if (!locale.getKeywordValue<std::string>(kCalendar, status).empty()) {
    return;
  }
  ::icu::Locale full = locale;  // "fa" alone is of Iran
  full.addLikelySubtags(status);
  locale.setKeywordValue(kCalendar, calendar_of(full.getCountry()), status);
}

}  // namespace quoll::icu
