#pragma once

#include <memory>

#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// Styled text from HTML and back; never null. Any thread may use it.
///
/// Reading is done by a module with a parser library behind it, which is loaded by this call, and
/// only when `with_html_reader` is true: a program that only writes pays nothing for it, and one
/// that confines itself afterwards still reads. The module is looked for beside the running program
/// (`../<libdir>/quoll/` of its folder). Without it `from_html` answers null and logs one line.
[[nodiscard]] std::shared_ptr<platform::StyledText> make_styled_text(bool with_html_reader);

}  // namespace quoll::xml
