#pragma once

#include <string>
#include <string_view>

namespace quoll::compose {

/// What a reader of plain text sees of an HTML text: paragraphs as lines, list items after a dash,
/// a link's address after its text when that is another. Linear in the size of the text, whatever
/// it holds.
[[nodiscard]] std::string plain_text_of_html(std::string_view html);

}  // namespace quoll::compose
