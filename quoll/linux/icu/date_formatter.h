#pragma once

#include <memory>

#include "quoll/platform/dates.h"

namespace quoll::icu {

/// Date formatters that use ICU; never null. A formatter without a locale has the user's locale,
/// and one without an offset has the time zone of the system; both are taken from the environment
/// when the formatter is made. A Gregorian calendar that was asked for by name also applies to
/// dates before 1582. A style is written as this system writes it. A pattern without a calendar is
/// written in the calendar of `hold_calendar`, because programs compare what it writes.
[[nodiscard]] std::shared_ptr<platform::Dates> make_dates();

}  // namespace quoll::icu
