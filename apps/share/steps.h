#pragma once

#include <chrono>
#include <memory>
#include <string_view>

#include "quoll/platform/log.h"
#include "quoll/platform/workspace.h"

namespace quoll::share {

/// The time of a share, and its steps for somebody who looks on: a line each on standard error,
/// with the seconds since the beginning. Any thread may call.
class Steps {
 public:
  explicit Steps(bool are_told) : are_told_(are_told) {}

  /// Writes a line when the steps are told. Control characters are written as escapes.
  void tell(std::string_view step) const;
  [[nodiscard]] std::chrono::milliseconds elapsed() const;

 private:
  bool are_told_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

/// A log, and a workspace, that tell each event as a step too.
[[nodiscard]] std::shared_ptr<platform::Log> make_telling_log(std::shared_ptr<platform::Log> log,
                                                              std::shared_ptr<const Steps> steps);
[[nodiscard]] std::shared_ptr<platform::NSWorkspace> make_telling_workspace(
    std::shared_ptr<platform::NSWorkspace> workspace, std::shared_ptr<const Steps> steps);

}  // namespace quoll::share
