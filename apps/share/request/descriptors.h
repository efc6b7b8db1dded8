#pragma once

#include "apps/share/request/share_request.h"

namespace quoll::share {

/// Opens standard descriptors that were closed on something whose use fails, so that no other file
/// gets their numbers.
void hold_standard_descriptors();

/// Closes what the starting program left open besides the standard descriptors, since no sandbox
/// takes away what is open. What the request names by its number, as bytes or as an item
/// (`/dev/fd/5`), stays.
void close_inherited_descriptors(const ShareRequest& request);

}  // namespace quoll::share
