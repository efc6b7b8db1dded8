#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "quoll/platform/coordinator.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/files.h"

namespace quoll::test {

/// Grants every access to another location, keeps what it was asked for, and may report an error.
class Redirecting final : public platform::NSFileCoordinator {
 public:
  struct Script {
    std::string path;
    bool runs = true;
    std::optional<foundation::Error> error = {};
    /// Whatever is there goes as soon as the access ends.
    bool vanishes = false;
    std::string asked = {};
    platform::NSFileCoordinatorWritingOptions options{};
  };

  explicit Redirecting(std::shared_ptr<Script> script) : script_(std::move(script)) {}

  std::optional<foundation::Error> coordinateWritingItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url,
      platform::NSFileCoordinatorWritingOptions options,
      const std::function<void(const std::shared_ptr<foundation::NSURL>&)>& accessor) override {
    script_->asked = foundation::file_system_path(url).value_or("");
    script_->options = options;
    if (script_->runs) {
      accessor(platform::fileURLWithPath(script_->path));
    }
    if (script_->vanishes) {
      std::filesystem::remove_all(script_->path);
    }
    return script_->error;
  }

 private:
  std::shared_ptr<Script> script_;
};

/// That desktop, with every access redirected.
inline platform::Desktop redirected(const platform::Desktop& desktop,
                                    const std::shared_ptr<Redirecting::Script>& script) {
  platform::Desktop changed = desktop;
  changed.coordinator = [script] { return std::make_unique<Redirecting>(script); };
  return changed;
}

}  // namespace quoll::test
