#pragma once

#include <string>
#include <string_view>

namespace quoll::links {

/// Appends a part of an address as a URL holds it: what it cannot hold is percent-encoded, and so
/// are a quote, a "%" that begins no escape and a "#" when the first one is already in `url`.
void append_address(std::string& url, std::string_view part);

}  // namespace quoll::links
