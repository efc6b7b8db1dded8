#pragma once

#include <variant>

#include "apps/share/request/share_request.h"

namespace quoll::share {

/// The command line of `quoll-share`.
struct Arguments {
  ShareRequest request;
  bool print = false;
  bool verbose = false;
  bool notify = false;
  bool json = false;
  /// The descriptor of a pipe for the progress (`progress_pipe.h`); -1 for none.
  int progress = -1;
};

/// Reads the command line. When there is nothing more to do (help was shown, or what was wrong) it
/// answers the number to end the program with.
[[nodiscard]] std::variant<Arguments, int> parse(int argc, const char* const* argv);

}  // namespace quoll::share
