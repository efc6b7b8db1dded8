#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "quoll/linux/xml/look.h"

namespace quoll::xml {

/// Applies the declarations of a `style` attribute. Those that are unknown or cannot be read are
/// ignored.
void apply_style(Inherited& inherited, std::string_view style);

/// The colour in `#rgb`, `#rrggbb`, `rgb(...)`, `rgba(...)` (the alpha is ignored) or a basic
/// colour name, in upper or lower case; none for anything else.
[[nodiscard]] std::optional<std::uint32_t> parse_colour(std::string_view text);

/// The first family in a list such as `'Segoe UI', sans-serif`; empty when its name is too long to
/// be one.
[[nodiscard]] SharedText first_family(std::string_view list);

/// The size in points for `<font size>`: `1` to `7`, `+1`, `-2`; 0 when it cannot be read.
[[nodiscard]] double font_element_size(std::string_view text);

/// The text without ASCII white space at both ends.
[[nodiscard]] std::string_view trim_ascii(std::string_view text);

}  // namespace quoll::xml
