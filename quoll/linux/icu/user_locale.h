#pragma once

#include <unicode/locid.h>

#include <string_view>

namespace quoll::icu {

/// The user's locale for dates: `LC_ALL`, else `LC_TIME`, else `LANG`, the first that is not empty,
/// whether or not the C library has such a locale.
[[nodiscard]] ::icu::Locale user_locale();

/// The locale of a name as it stands in the environment: "de_DE.UTF-8", "sr_RS@latin". `C` and
/// `POSIX`, the empty name and what cannot be a locale are en_US_POSIX.
[[nodiscard]] ::icu::Locale locale_named(std::string_view name);

}  // namespace quoll::icu
