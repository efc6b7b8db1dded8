#pragma once

#include "apps/console/operations/json.h"
#include "quoll/recording/event.h"

namespace quoll::console {

/// Appends an event to the array in a reply, unless it is one that no reply tells. Refuses a
/// notification whose object cannot be written.
void write_event(const recording::Event& event, Json& array);

}  // namespace quoll::console
