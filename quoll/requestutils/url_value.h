#pragma once

#include <memory>
#include <string_view>

#include "quoll/foundation/nsurl.h"

namespace quoll::RequestUtils {

/// `URLValue`: an absolute path (one that begins with "/" or "~") as a file URL, as
/// `fileURLWithPath:` makes it; any other text as `URLWithString:` makes it. It stands here because
/// a path is looked up on the disk: a folder's URL ends in "/".
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLValue(std::string_view text);

}  // namespace quoll::RequestUtils
