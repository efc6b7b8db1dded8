#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Reading what a clipboard holds, which programs write in more ways than one.
namespace quoll::share {

/// Text as UTF-8: UTF-16 is known by its byte-order mark or its zero bytes. Without the mark, and
/// without the zero bytes that some put at the end. What is neither comes back as it is.
[[nodiscard]] std::string clipboard_text(std::string_view bytes);

/// The links and files of a list with one in each line: `text/uri-list`, with comments, or what
/// file managers copy, with the word "copy" or "cut" in front. (What was cut is shared, not moved.)
[[nodiscard]] std::vector<std::string> clipboard_items(std::string_view text);

}  // namespace quoll::share
