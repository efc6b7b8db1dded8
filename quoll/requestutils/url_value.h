#pragma once

#include <memory>
#include <string_view>

#include "quoll/foundation/nsurl.h"

namespace quoll::RequestUtils {

/// `URLValue`: the text as a URL. An absolute path (one that begins with "/" or "~") becomes a file
/// URL, made as `fileURLWithPath:` makes it; it is looked up on the disk, and the URL of a folder
/// ends in "/". Any other text becomes what `URLWithString:` makes of it, which is null when it is
/// not a URL.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLValue(std::string_view text);

}  // namespace quoll::RequestUtils
