#pragma once

#include <string_view>

#include "quoll/foundation/value.h"
#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// The class of a span in which no-break blanks stand for ordinary ones. Mail clients keep no-break
/// blanks, but not all of them keep a style that preserves ordinary blanks.
inline constexpr std::string_view kBlanksClass = "quoll-blanks";
/// The style sheet of a document: its paragraphs are lines, without space between them.
inline constexpr std::string_view kParagraphRule = "p { margin: 0 }";
inline constexpr std::string_view kNoBreakBlank = "\xC2\xA0";

/// A complete HTML document in UTF-8. A paragraph ends with LF, CR, CRLF or the end of the text,
/// and becomes one `<p>`. All that a paragraph needs is inside it, so it keeps its look without the
/// style sheet. The text of each run must be UTF-8. Control characters that HTML forbids are left
/// out, and so is an attribute that is not UTF-8.
[[nodiscard]] foundation::Bytes html_document(const platform::NSAttributedString& text);

}  // namespace quoll::xml
