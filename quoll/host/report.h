#pragma once

#include <ostream>

#include "quoll/host/run.h"
#include "quoll/host/select.h"
#include "quoll/host/watched_workspace.h"

namespace quoll::host {

/// What a program that shares ends with.
enum class ExitCode : int {
  kOpened = 0,
  kNotOpened = 1,
  kUsage = 2,
  kSomethingLeftOut = 3,
};

/// Tells people what came of the share: a line for each thing that was left out, one when the
/// shared folder could not be prepared, one when nothing was opened. A share that arrived whole is
/// silent.
[[nodiscard]] ExitCode report(const Selection& selection, const Outcome& outcome,
                              const WatchedWorkspace& workspace, std::ostream& out);

}  // namespace quoll::host
