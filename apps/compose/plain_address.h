#pragma once

#include <string_view>

namespace quoll::compose {

/// True for one word of an address, or several with dots between them: nothing in it needs quotes.
[[nodiscard]] bool is_words(std::string_view text);

/// True for an address that a header may have: a local part, "@" and a domain, of at most 320
/// bytes. The local part may stand in quotes. No character in it is invisible or turns the
/// direction of the others.
[[nodiscard]] bool is_address(std::string_view text);

/// True for what a mail client may be told: an address, or "NAME <ADDRESS>". This address has no
/// quotes, no blank, no comma and no "-" in front, the name is bare or in quotes that end where it
/// ends, and nothing in it is invisible or can be decoded.
[[nodiscard]] bool is_plain_address(std::string_view text);

}  // namespace quoll::compose
