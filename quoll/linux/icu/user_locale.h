#pragma once

#include <unicode/locid.h>

#include <string_view>

namespace quoll::icu {

/// The user's locale for dates: the first of `LC_ALL`, `LC_TIME` and `LANG` that is not empty. The
/// C library need not have this locale.
[[nodiscard]] ::icu::Locale user_locale();

/// The locale with a name as it is written in the environment: "de_DE.UTF-8", "sr_RS@latin". `C`,
/// `POSIX`, the empty name and what cannot be a name give en_US_POSIX.
[[nodiscard]] ::icu::Locale locale_named(std::string_view name);

/// Names in the locale, unless it names one, the calendar of its country: by a table of our own,
/// since the calendar that ICU takes changes with its version.
void hold_calendar(::icu::Locale& locale, UErrorCode& status);

}  // namespace quoll::icu
