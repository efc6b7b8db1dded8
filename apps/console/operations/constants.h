#pragma once

#include <optional>
#include <string_view>

#include "quoll/foundation/value.h"

namespace quoll::console {

/// The value of an exported constant; none when there is no constant with this name.
[[nodiscard]] std::optional<foundation::Value> constant(std::string_view name);

}  // namespace quoll::console
