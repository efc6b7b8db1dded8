#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/value.h"

/// How bytes are written in JSON: standard Base64 with padding and nothing between.
namespace quoll::console {

[[nodiscard]] std::string base64(const foundation::Bytes& bytes);

/// None when the text is anything but what `base64` writes.
[[nodiscard]] std::optional<foundation::Bytes> bytes_of_base64(std::string_view text);

}  // namespace quoll::console
