#pragma once

#include <gio/gdesktopappinfo.h>

#include <chrono>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/open_request.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

/// The D-Bus object path of an application: "it.vorlent.quoll2-beta" gives
/// "/it/vorlent/quoll2_beta".
[[nodiscard]] std::string object_path(const std::string& application);

/// "20 s", or "300 ms".
[[nodiscard]] std::string duration_text(std::chrono::milliseconds duration);

/// Opens URLs with applications, in a process that does nothing else. The constructor begins to
/// connect to the session bus. The object and its calls belong to one thread.
class Opener {
 public:
  /// `time_out` is the time that an application has to answer a request.
  Opener(ActivationTokens tokens, std::chrono::milliseconds time_out);

  /// Gives the URLs to the application over the bus, which starts it if need be, and waits for its
  /// answer. When the bus does not know it, runs the `Exec` line of `<application>.desktop`, and
  /// waits until the program has taken the URLs if its entry says that it tells.
  [[nodiscard]] OpenResult open(const OpenRequest& request);

  /// Has the application answer `Activate` over the bus, which starts it if need be, and gives it
  /// nothing. False when the bus does not know it; then `open` would run its `Exec` line.
  [[nodiscard]] bool activate(const std::string& application, FailureReason& failure,
                              std::string& advice);

 private:
  /// False when nobody is there.
  [[nodiscard]] bool open_by_bus(GDBusConnection* connection, const OpenRequest& request,
                                 std::chrono::steady_clock::time_point deadline,
                                 OpenResult& result) const;
  [[nodiscard]] OpenResult open_by_entry(const OpenRequest& request,
                                         const std::string& bus_reason) const;
  [[nodiscard]] OpenResult start(GDesktopAppInfo* entry, const OpenRequest& request) const;
  [[nodiscard]] OpenResult failed(const ErrorSlot& error, const std::string& application) const;

  ActivationTokens tokens_;
  std::chrono::milliseconds time_out_;
  SessionBus bus_;
};

}  // namespace quoll::gio
