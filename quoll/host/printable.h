#pragma once

#include <string>
#include <string_view>

namespace quoll::host {

/// A name from a stranger, to be shown in one line at a terminal: control characters, line breaks
/// and characters that turn the direction of writing become escapes, bytes that are not UTF-8 stand
/// as `%XX`. What is longer than a path can be is cut and ends in "...".
[[nodiscard]] std::string printable(std::string_view bytes);

}  // namespace quoll::host
