#pragma once

#include <string>
#include <string_view>

namespace quoll::receiver {

/// The text with control characters (but not line feeds, when they are kept) as escapes `\xNN`, and
/// what is not UTF-8 as `%XX`.
[[nodiscard]] std::string printable(std::string_view text, bool keep_line_feeds = false);

}  // namespace quoll::receiver
