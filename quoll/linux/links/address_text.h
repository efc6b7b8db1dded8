#pragma once

#include <string>
#include <string_view>

namespace quoll::links {

/// Appends a part of an address to a URL and percent-encodes what a URL must not hold. A quote is
/// encoded, and so are a "%" that begins no escape and a "#" when `url` has one already.
void append_address(std::string& url, std::string_view part);

}  // namespace quoll::links
