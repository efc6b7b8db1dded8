#pragma once

#include <memory>

#include "quoll/platform/workspace.h"

namespace quoll::share {

/// A workspace that writes each URL to a descriptor, one a line, instead of opening it. Its answer
/// is whether all was written; when not, the log says why.
[[nodiscard]] std::shared_ptr<platform::NSWorkspace> make_print_workspace(int descriptor);

}  // namespace quoll::share
