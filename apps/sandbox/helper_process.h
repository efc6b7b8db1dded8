#pragma once

#include <sys/resource.h>

#include "apps/sandbox/call_filter.h"

/// What programs have in common that read something from strangers, for one that is confined
/// itself.
namespace quoll::sandbox {

/// Limits a resource of this process for good.
void limit(__rlimit_resource resource, rlim_t most);

/// Has this process killed when the one that started it ends. That one reads its standard error.
void end_with_parent();

/// Allows the calls for memory that is never executable, for a process with one thread, and for its
/// end.
void allow_running(CallFilter& filter);

}  // namespace quoll::sandbox
