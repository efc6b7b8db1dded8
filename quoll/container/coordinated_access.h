#pragma once

#include <functional>
#include <memory>

#include "quoll/foundation/error.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/nsurl.h"

namespace quoll::container {

/// Runs the accessor on this thread, with the location to use, while no other program or thread
/// works on the item at `url` or inside it; waits until that is granted. A coordination that fails,
/// as every one does without a `url`, is logged by `failure_line` (with the error in its "%@") once
/// all is done, as a `kNotCoordinatedError`. What the accessor throws passes through.
void with_coordinated_access(
    const std::shared_ptr<foundation::NSURL>& url, foundation::Pattern<1> failure_line,
    const std::function<void(const std::shared_ptr<foundation::NSURL>& location)>& accessor);

}  // namespace quoll::container
