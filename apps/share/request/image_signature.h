#pragma once

#include <string_view>

namespace quoll::share {

/// True when bytes begin as a PNG, JPEG, GIF, TIFF or WebP file does.
[[nodiscard]] bool begins_as_image(std::string_view bytes);

}  // namespace quoll::share
