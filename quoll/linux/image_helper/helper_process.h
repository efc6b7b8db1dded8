#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "quoll/linux/image_helper/descriptors.h"

namespace quoll::image_helper {

/// What became of one run of the helper.
struct Outcome {
  bool ended_well = false;
  /// One line when it did not.
  std::string reason;
};

/// Runs `program argument` with `in` and `out` as its standard streams, and waits until it has
/// ended or is killed because its time is over. Any thread may call; the process is gone
/// afterwards.
[[nodiscard]] Outcome run_helper(const std::string& program, const char* argument, int in, int out,
                                 std::chrono::milliseconds time_limit);

}  // namespace quoll::image_helper
