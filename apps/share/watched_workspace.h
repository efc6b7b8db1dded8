#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/share/witness.h"
#include "quoll/platform/workspace.h"

namespace quoll::share {

/// A workspace that remembers what it was asked to open and what came of it, since who asks it does
/// not look.
class WatchedWorkspace final : public platform::NSWorkspace {
 public:
  struct Opening {
    std::vector<std::shared_ptr<foundation::NSURL>> urls;
    std::string application;
    bool is_opened = false;
    /// What was logged meanwhile.
    std::vector<platform::LogEvent> logged;
  };

  explicit WatchedWorkspace(std::shared_ptr<platform::NSWorkspace> workspace)
      : workspace_(std::move(workspace)) {}

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, unsigned options) override;

  /// The last one that was asked for and answered; none when nothing was.
  [[nodiscard]] std::optional<Opening> opening() const;

 private:
  std::shared_ptr<platform::NSWorkspace> workspace_;
  mutable std::mutex mutex_;
  std::optional<Opening> opening_;
};

}  // namespace quoll::share
