#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "quoll/foundation/nsurl.h"

namespace quoll::container {

/// Runs the accessor, with the location to use, while no other program works on the item at `url`
/// or inside it. A coordination that fails is logged by `failure_line` (with the error in its
/// "%@") once all is done.
void with_coordinated_access(
    const std::shared_ptr<foundation::NSURL>& url, std::string_view failure_line,
    const std::function<void(const std::shared_ptr<foundation::NSURL>& location)>& accessor);

}  // namespace quoll::container
