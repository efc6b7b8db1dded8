#pragma once

#include <memory>
#include <utility>

#include "quoll/platform/workspace.h"

namespace quoll::share {

/// A workspace for compose commands that opens none whose draft would hold nothing: no attachment,
/// no link and no text. Then the log says so. Any thread may open.
class DraftWorkspace final : public platform::NSWorkspace {
 public:
  explicit DraftWorkspace(std::shared_ptr<NSWorkspace> workspace)
      : workspace_(std::move(workspace)) {}

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, platform::NSWorkspaceLaunchOptions options) override;

 private:
  std::shared_ptr<NSWorkspace> workspace_;
};

}  // namespace quoll::share
