#pragma once

#include <string>
#include <string_view>

namespace quoll::test {

/// A PDF file, then what its compressed streams hold: newer versions of cairo describe the pages
/// there.
[[nodiscard]] std::string pdf_text(std::string_view file);

}  // namespace quoll::test
