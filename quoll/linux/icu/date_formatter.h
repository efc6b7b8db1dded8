#pragma once

#include <memory>

#include "quoll/platform/dates.h"

namespace quoll::icu {

/// Date formatters by ICU. A formatter without a locale takes the user's, one without an offset the
/// time zone of this system, both from the environment as it is when the formatter is made. A
/// Gregorian calendar that is asked for by name is carried back before 1582.
[[nodiscard]] std::shared_ptr<platform::Dates> make_dates();

}  // namespace quoll::icu
