#pragma once

#include <string>
#include <string_view>

namespace quoll::foundation {

/// A number in a locale's own writing as the same number in ASCII: every decimal digit of whatever
/// script (category Nd of Unicode 15) becomes one of 0 to 9, the minus sign U+2212 becomes "-", and
/// the marks that turn the direction of writing are left out. Everything else stays, bytes that are
/// not UTF-8 too.
[[nodiscard]] std::string ascii_number(std::string_view text);

}  // namespace quoll::foundation
