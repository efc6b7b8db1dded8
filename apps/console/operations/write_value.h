#pragma once

#include <string_view>

#include "apps/console/operations/json.h"
#include "quoll/foundation/value.h"

namespace quoll::console {

/// A text as JSON. JSON holds UTF-8 only, while a path may be any bytes: each bad byte is `%XX`.
[[nodiscard]] Json json_text(std::string_view text);

/// The JSON form of a value. Refuses what has none, what contains itself, and what nests without
/// end. A record is written while its lock is held.
[[nodiscard]] Json write_value(const foundation::Value& value);

}  // namespace quoll::console
