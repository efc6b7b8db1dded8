#pragma once

#include <chrono>
#include <limits>
#include <memory>
#include <string>

#include "quoll/platform/workspace.h"

namespace quoll::gio {

/// The time that an application has to answer that it took the URLs.
inline constexpr std::chrono::milliseconds kOpeningTimeOut{20'000};

/// The only things that a launcher opens. The launcher itself enforces this, because it is not
/// confined: an attacker who has taken over the program that asks it gets nothing else opened.
struct Openable {
  std::string urls = "quoll://";                  ///< the beginning of every URL
  std::string applications = "it.vorlent.quoll";  ///< the beginning of the application's identifier
  unsigned times = std::numeric_limits<unsigned>::max();  ///< how many requests it carries out
};

/// Starts the launcher and answers the workspace that sends URLs to it; never null. The launcher is
/// a process of its own that opens URLs. It begins at once to connect to the session bus.
///
/// Call it once, at the start of `main`, while the process has one thread and is not confined. Then
/// confining this process later does not confine the applications that are started. This process
/// itself never starts GIO.
///
/// XDG_ACTIVATION_TOKEN and DESKTOP_STARTUP_ID are removed from this process's environment. The
/// application that is opened gets them, unless `NSWorkspaceLaunchWithoutActivation` (without
/// activation) is given.
///
/// When `openURLs` answers false, the log has one line "openURLs %@" with the reason in plain
/// words. The launcher ends when the workspace is destroyed or this process ends.
[[nodiscard]] std::shared_ptr<platform::NSWorkspace> start_launcher(
    Openable openable = {}, std::chrono::milliseconds time_out = kOpeningTimeOut);

}  // namespace quoll::gio
