#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "quoll/linux/xml/look.h"

namespace quoll::xml {

/// Applies the declarations of a `style` attribute. What is not known, or cannot be read, changes
/// nothing.
void apply_style(Inherited& inherited, std::string_view style);

/// `#rgb`, `#rrggbb`, `rgb(...)`, `rgba(...)` (without its alpha) or a basic colour name, in any
/// case. None for anything else.
[[nodiscard]] std::optional<std::uint32_t> parse_colour(std::string_view text);

/// The first family of a list such as `'Segoe UI', sans-serif`; nothing when it is unusably long.
[[nodiscard]] SharedText first_family(std::string_view list);

/// The size in points that `<font size>` gives: `1` to `7`, `+1`, `-2`; 0 when it cannot be read.
[[nodiscard]] double font_element_size(std::string_view text);

/// Without white space (ASCII) at both ends.
[[nodiscard]] std::string_view trim_ascii(std::string_view text);

}  // namespace quoll::xml
