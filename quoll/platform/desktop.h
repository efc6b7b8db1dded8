#pragma once

#include <functional>
#include <memory>

#include "quoll/platform/bundle.h"
#include "quoll/platform/clock.h"
#include "quoll/platform/coordinator.h"
#include "quoll/platform/dates.h"
#include "quoll/platform/files.h"
#include "quoll/platform/images.h"
#include "quoll/platform/links.h"
#include "quoll/platform/log.h"
#include "quoll/platform/notifications.h"
#include "quoll/platform/queue.h"
#include "quoll/platform/styled_text.h"
#include "quoll/platform/workspace.h"

namespace quoll::platform {

/// Everything that surrounds a program. What is left null is answered by the desktop that has
/// nothing: no identifier, no container, no file, opening answers false, the log is silent, a block
/// is never run, a sleep takes no time, a date prints as nothing, a text has no links.
struct Desktop {
  std::shared_ptr<NSBundle> bundle{};
  std::shared_ptr<NSFileManager> files{};
  std::function<std::unique_ptr<NSFileCoordinator>()> coordinator{};
  std::shared_ptr<NSWorkspace> workspace{};
  std::shared_ptr<NSNotificationCenter> notifications{};
  std::shared_ptr<Log> log{};
  std::shared_ptr<Queue> queue{};
  std::shared_ptr<Clock> clock{};
  std::shared_ptr<Images> images{};
  std::shared_ptr<StyledText> styled_text{};
  std::shared_ptr<Dates> dates{};
  std::shared_ptr<Links> links{};
};

/// Installs the desktop of this process and answers the one before. `main` does it once, before it
/// starts threads; a port that another thread has in hand stays alive.
Desktop install(Desktop desktop);

/// The installed desktop, without a null in it.
[[nodiscard]] std::shared_ptr<const Desktop> current_desktop();

/// The desktop that has nothing.
[[nodiscard]] Desktop empty_desktop();

/// Installs a desktop for as long as it lives, for tests and for hosts inside another program.
class ScopedDesktop {
 public:
  explicit ScopedDesktop(Desktop desktop) : before_(install(std::move(desktop))) {}
  ScopedDesktop(const ScopedDesktop&) = delete;
  ScopedDesktop& operator=(const ScopedDesktop&) = delete;
  ~ScopedDesktop() { install(std::move(before_)); }

 private:
  Desktop before_;
};

}  // namespace quoll::platform
