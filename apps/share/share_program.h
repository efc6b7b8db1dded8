#pragma once

#include <functional>
#include <string>

#include "apps/share/request/share_request.h"
#include "apps/share/run.h"

namespace quoll::share {

/// How a program that shares talks to whoever asked for it.
struct ShareSettings {
  /// The command URL goes to standard output and is not opened.
  bool print = false;
  /// The log goes to standard error too.
  bool verbose = false;
  /// Null: a person at a terminal is told.
  Progress progress;
  /// Called once, at the end, with what there is to tell: whole lines, none when all went well.
  std::function<void(const std::string& told)> tell;
};

/// Shares what was asked for as one draft, and answers the number to end the program with; it may
/// end the program itself. For the whole of a program: it starts the launcher, gives up what a
/// share does not need and installs the desktop, so it is called once, while there is one thread.
[[nodiscard]] int run_share(ShareRequest request, const ShareSettings& settings);

}  // namespace quoll::share
