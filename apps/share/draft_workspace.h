#pragma once

#include <memory>
#include <utility>

#include "apps/share/request/envelope.h"
#include "quoll/platform/workspace.h"

namespace quoll::share {

/// A workspace for compose commands that adds to each what no item of the share carries: the
/// recipients, and the subject unless a link has brought it. It opens none whose draft would hold
/// nothing, neither attachment nor link nor text; then the log says so. Any thread may open.
class DraftWorkspace final : public platform::NSWorkspace {
 public:
  explicit DraftWorkspace(std::shared_ptr<NSWorkspace> workspace)
      : workspace_(std::move(workspace)) {}

  /// To be called before the first command comes.
  void set_envelope(Envelope envelope) { envelope_ = std::move(envelope); }

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, platform::NSWorkspaceLaunchOptions options) override;

 private:
  std::shared_ptr<NSWorkspace> workspace_;
  Envelope envelope_;
};

}  // namespace quoll::share
