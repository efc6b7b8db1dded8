#pragma once

#include <string_view>

#include "apps/console/operations/json.h"
#include "quoll/foundation/value.h"

namespace quoll::console {

/// A text as JSON. JSON holds only UTF-8, but a path may hold any bytes: each byte that is not
/// UTF-8 is written as `%XX`.
[[nodiscard]] Json json_text(std::string_view text);

/// The JSON form of a value. Throws `Refused` for a value that has no such form, contains itself,
/// or is nested too deeply. A record's lock is held while it is written.
[[nodiscard]] Json write_value(const foundation::Value& value);

}  // namespace quoll::console
