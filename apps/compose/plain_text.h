#pragma once

#include <string>
#include <string_view>

namespace quoll::compose {

/// The plain text of an HTML text. Paragraphs become lines, list items begin with a dash, and the
/// address of a link follows its text if the two differ. The time is linear in the length of the
/// text, whatever it holds.
[[nodiscard]] std::string plain_text_of_html(std::string_view html);

}  // namespace quoll::compose
