#pragma once

#include <optional>
#include <string_view>

#include "apps/share/request/share_request.h"

namespace quoll::share {

/// What a share menu asks for, read from one CBOR map with the keys "urls" and "title"; others are
/// passed over. What is in "urls" is called an item when it can be one (a link, an absolute path, a
/// file or `data:` URL, however it is escaped), and is the text of the share otherwise: browsers
/// put the marked text beside the page's address. None when the bytes are no such map.
[[nodiscard]] std::optional<ShareRequest> read_menu_request(std::string_view cbor);

}  // namespace quoll::share
