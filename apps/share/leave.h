#pragma once

#include "apps/share/report.h"
#include "apps/share/request/select.h"

namespace quoll::share {

/// The end of a program that shared: removes the private files and answers the number to return
/// from `main`. When items are still being answered it does not return: it ends the process without
/// destroying what they use.
[[nodiscard]] int leave(Selection& selection, ExitCode code);

}  // namespace quoll::share
