#pragma once

#include <string_view>

#include "quoll/foundation/value.h"
#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// The class of a span whose no-break blanks stand for ordinary ones. Mail clients keep no-break
/// blanks, but not every one keeps a style that preserves ordinary blanks.
inline constexpr std::string_view kBlanksClass = "quoll-blanks";
inline constexpr std::string_view kNoBreakBlank = "\xC2\xA0";

/// A whole HTML document in UTF-8. Each paragraph (ended by LF, CR or CRLF, or by the end of the
/// text) is one `<p>`; everything that a paragraph needs stands in it, so that it survives without
/// the style sheet. Each run's text is UTF-8; control characters that HTML forbids are left
/// out, and so is an attribute that is not UTF-8.
[[nodiscard]] foundation::Bytes html_document(const platform::NSAttributedString& text);

}  // namespace quoll::xml
