#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace quoll::posix {

/// What a small program of the system answered.
struct ToolAnswer {
  enum class End {
    kWell,
    kBadly,    ///< it said so: see `complaint`
    kSilent,   ///< it delivered nothing for too long, or took too long in all, and was ended
    kTooLong,  ///< it delivered more than wanted, and was ended
    kMissing,  ///< there is no such program
  };

  End end = End::kMissing;
  std::string output;
  std::string complaint;  ///< the first line of its standard error, cut short and printable
};

/// Runs a program of PATH to its end, with nothing on its standard input. It is ended, with the
/// processes that it started, when it delivers nothing for `patience`, and at the deadline.
[[nodiscard]] ToolAnswer run_tool(const std::vector<std::string>& command, std::size_t most,
                                  std::chrono::milliseconds patience,
                                  std::chrono::steady_clock::time_point deadline);

}  // namespace quoll::posix
