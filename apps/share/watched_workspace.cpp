#include "apps/share/watched_workspace.h"

namespace quoll::share {

bool WatchedWorkspace::openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                                std::string_view application, unsigned options) {
  Witness witness;
  const Witness::Scope scope(witness);
  const bool is_opened = workspace_->openURLs(urls, application, options);
  const std::lock_guard lock(mutex_);
  opening_ = Opening{urls, std::string(application), is_opened, witness.logged()};
  return is_opened;
}

std::optional<WatchedWorkspace::Opening> WatchedWorkspace::opening() const {
  const std::lock_guard lock(mutex_);
  return opening_;
}

}  // namespace quoll::share
