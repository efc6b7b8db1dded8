#pragma once

#include <string>

#include "quoll/foundation/value.h"

namespace quoll::console {

/// Writes the binary form, see `write_property_list`. Equal texts are written once.
[[nodiscard]] std::string write_binary_property_list(const foundation::Value& root);

}  // namespace quoll::console
