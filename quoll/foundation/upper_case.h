#pragma once

#include <string>
#include <string_view>

namespace quoll::foundation {

/// The text in upper case, the same in every locale and on every system: all of Unicode 14, and a
/// character may become several ("ß" gives "SS"). Bytes that are not UTF-8 stay as they are.
[[nodiscard]] std::string upper_case(std::string_view text);

}  // namespace quoll::foundation
