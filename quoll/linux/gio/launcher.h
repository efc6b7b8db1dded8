#pragma once

#include <array>
#include <chrono>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/platform/workspace.h"

namespace quoll::gio {

/// The time that an application has to take the URLs.
inline constexpr std::chrono::milliseconds kOpeningTimeOut{20'000};

/// The identifiers of the mail application's editions.
inline constexpr std::array<std::string_view, 5> kEditions{
    "it.vorlent.quoll", "it.vorlent.quoll.beta8", "it.vorlent.quoll.beta10",
    "it.vorlent.quoll.beta11", "it.vorlent.quoll2"};

/// The only things that a launcher opens. The launcher itself enforces this, because it is not
/// confined: an attacker who has taken over the program that asks it gets nothing else opened.
struct Openable {
  std::string urls = "quoll://";  ///< the beginning of every URL
  std::vector<std::string> applications{kEditions.begin(), kEditions.end()};  ///< their identifiers
  std::size_t most_urls = std::numeric_limits<std::size_t>::max();  ///< how many it opens in all
};

/// Something that an application was given and did not take.
struct LeftOut {
  std::string name;
  std::string reason;  ///< in words that follow a colon
};

/// A workspace that has a launcher open URLs.
class LauncherWorkspace : public platform::NSWorkspace {
 public:
  /// What the application said that it did not take of the last URLs that it was given; empty when
  /// it said nothing. Not all applications say it. Any thread may call.
  [[nodiscard]] virtual std::vector<LeftOut> left_out() const = 0;
  /// Where the application keeps what it made of them, in printable form; empty when it did not
  /// say. Any thread may call.
  [[nodiscard]] virtual std::string draft() const = 0;
};

/// The detail of the logged error that says what can be done about the failure; not all have one.
inline constexpr std::string_view kAdviceKey = "NSLocalizedRecoverySuggestion";

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
/// While an application takes longer than two seconds, somebody at a terminal is told, on standard
/// error.
///
/// When `openURLs` answers false, the log has one line "openURLs %@" with the reason in plain
/// words. What the application said itself stands in the event's error alone. The launcher ends
/// when the workspace is destroyed or this process ends.
[[nodiscard]] std::shared_ptr<LauncherWorkspace> start_launcher(
    Openable openable = {}, std::chrono::milliseconds time_out = kOpeningTimeOut);

}  // namespace quoll::gio
