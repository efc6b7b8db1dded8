#pragma once

#include "apps/share/request/share_request.h"

namespace quoll::share {

/// Opens each standard descriptor that is closed, in a way that makes its use fail, so that no
/// other file gets its number.
void hold_standard_descriptors();

/// Closes the descriptors that the starting program left open, because no sandbox takes away what
/// is open. The standard descriptors stay, and those that the request names, as bytes or as an item
/// (`/dev/fd/5`), and `kept`, unless it is -1, which programs that are started do not inherit.
void close_inherited_descriptors(const ShareRequest& request, int kept = -1);

}  // namespace quoll::share
