#pragma once

#include "quoll/host/report.h"
#include "quoll/host/select.h"

namespace quoll::host {

/// The end of a program that shared: removes the private files and answers the number to return
/// from `main`. When items are still being answered it does not return: it ends the process without
/// destroying what they use.
[[nodiscard]] int leave(Selection& selection, ExitCode code);

}  // namespace quoll::host
