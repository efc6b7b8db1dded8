#pragma once

#include <memory>

#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// Converts styled text from HTML and to HTML; never null. Any thread may use it.
///
/// Reading is done by a module, which brings a parser library. This call loads it if
/// `with_html_reader` is true. So a program that only writes does not load the parser, and a
/// program that confines itself later can still read. The module is in `../<libdir>/quoll/`, seen
/// from the folder of the running program. Without it `from_html` answers null and logs one line.
[[nodiscard]] std::shared_ptr<platform::StyledText> make_styled_text(bool with_html_reader);

}  // namespace quoll::xml
