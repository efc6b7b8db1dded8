#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "apps/share/request/resolved_item.h"

namespace quoll::share {

/// The scheme of a link, in small letters and without ":"; none when the text does not begin as a
/// link does: with a scheme of two characters or more, then ":" and no white space.
[[nodiscard]] std::optional<std::string> link_scheme(std::string_view text);

/// True for a text that is a link without its scheme, since it begins with "www.".
[[nodiscard]] bool is_web_host(std::string_view text);

/// True for the scheme of files of another computer or of a device, which a desktop may have
/// mounted.
[[nodiscard]] bool is_remote_scheme(std::string_view scheme);

/// The text with everything escaped that would make it no URL, and nothing else.
[[nodiscard]] std::string with_escapes(std::string_view text);

/// Makes a link of a text that has a scheme. What a link may not hold is escaped, but a link of two
/// lines is refused. So are links that nobody who gets the mail could open: without a host, to a
/// place of the file manager or of the browser, to a file of another computer.
[[nodiscard]] ResolvedItem resolve_link(std::string_view text);

/// What was probably meant by a text that is neither a file nor a link: how to write it. Empty when
/// it looks like nothing else than the name of a file.
[[nodiscard]] std::string what_was_meant(std::string_view text);

}  // namespace quoll::share
