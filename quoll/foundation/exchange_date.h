#pragma once

#include <optional>
#include <string_view>

#include "quoll/foundation/value.h"

/// The form in which dates are exchanged with the mail application: "2024-03-07T10:15:00Z".
namespace quoll::foundation {

/// The form as a date formatter's pattern, in Unicode's letters.
inline constexpr std::string_view kExchangeDateFormat = "yyyy-MM-dd'T'HH:mm:ss'Z'";

/// The moment that the text names, in UTC, by the Gregorian calendar carried back before 1582. None
/// for any other text than exactly 20 ASCII characters of that form that name a moment from year 1
/// to 9999. (Locale libraries accept more.)
[[nodiscard]] std::optional<Date> date_of_exchange_text(std::string_view text);

}  // namespace quoll::foundation
