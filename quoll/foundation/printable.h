#pragma once

#include <string>
#include <string_view>

namespace quoll::foundation {

/// Text from a stranger, to be shown in one line of a log or at a terminal: control characters,
/// line breaks and characters that turn the direction of writing become escapes (`\n`, `\x1B`,
/// `\u202E`), bytes that are not UTF-8 stand as `%XX`. What would be longer than `longest` bytes is
/// cut between two characters and ends in "…".
[[nodiscard]] std::string printable(std::string_view bytes,
                                    std::size_t longest = std::string_view::npos);

}  // namespace quoll::foundation
