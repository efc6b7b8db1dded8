#pragma once

#include <string_view>

/// The loops that find out whether a text is UTF-8: one in plain C++, one for processors with AVX2.
/// Both give the same answer.
namespace quoll::foundation::utf8 {

using Check = bool (*)(std::string_view bytes);

[[nodiscard, gnu::visibility("hidden")]] bool is_utf8_portably(std::string_view bytes);
/// Null when the processor does not have it.
[[nodiscard, gnu::visibility("hidden")]] Check avx2_check();

}  // namespace quoll::foundation::utf8
