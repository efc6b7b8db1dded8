#pragma once

#include <memory>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"

namespace quoll::container {

/// `arrayWithContentsOfURL:`: the property-list file at a file URL, in whatever form, when its root
/// is a list. Null when the file is missing, cannot be read or is broken, when its root is
/// something else, and for a null URL. Nothing is logged.
[[nodiscard]] foundation::List array_with_contents_of_url(
    const std::shared_ptr<foundation::NSURL>& url);

}  // namespace quoll::container
