#pragma once

#include <chrono>
#include <limits>
#include <memory>
#include <string>

#include "quoll/platform/workspace.h"

namespace quoll::gio {

/// How long an application has to take what it was given.
inline constexpr std::chrono::milliseconds kOpeningTimeOut{20'000};

/// What a launcher opens, and nothing else: not even for whoever has taken over the program that
/// asks it, since it is not confined when the program is.
struct Openable {
  std::string urls = "quoll://";                  ///< how every URL begins
  std::string applications = "it.vorlent.quoll";  ///< how the application's identifier begins
  unsigned times = std::numeric_limits<unsigned>::max();  ///< how often it hands something over
};

/// Starts the launcher, a process of its own that opens URLs and begins at once to connect to the
/// session bus, and answers the workspace that hands URLs to it; never null. Called once, at the
/// start of `main`: the process has one thread and is not confined yet, and whatever confines it
/// later does not confine the applications that are started. This process never starts GIO by it.
///
/// XDG_ACTIVATION_TOKEN and DESKTOP_STARTUP_ID are taken out of this process's environment: they
/// belong to the application that is opened, and with option 512 to nobody.
///
/// When `openURLs` answers false, the log has one line "openURLs %@" with the reason, in plain
/// words. The launcher ends when the workspace goes or this process ends.
[[nodiscard]] std::shared_ptr<platform::NSWorkspace> start_launcher(
    Openable openable = {}, std::chrono::milliseconds time_out = kOpeningTimeOut);

}  // namespace quoll::gio
