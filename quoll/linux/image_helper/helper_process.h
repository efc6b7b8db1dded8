#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace quoll::image_helper {

/// Runs `program argument` with `in` and `out` as its standard streams, and waits until it has
/// ended or is killed because its time is over. Answers one line when it did not end well, else the
/// empty text. It is killed too when `go_on`, asked ten times a second unless it is null, answers
/// false. Any thread may call; the process is gone afterwards.
[[nodiscard]] std::string run_helper(const std::string& program, const char* argument, int in,
                                     int out, std::chrono::milliseconds time_limit,
                                     const std::function<bool()>& go_on = nullptr);

}  // namespace quoll::image_helper
