#pragma once

#include <chrono>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/open_request.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

/// The object path under which an application answers on the bus: "it.vorlent.quoll2-beta" gives
/// "/it/vorlent/quoll2_beta".
[[nodiscard]] std::string object_path(const std::string& application);

/// Opens URLs with applications, for a process that does nothing else. It begins to connect to the
/// session bus when it is made; it and its calls belong to one thread.
class Opener {
 public:
  /// `time_out` is what an application has for one request, from being asked to its answer.
  Opener(ActivationTokens tokens, std::chrono::milliseconds time_out);

  /// Hands the URLs over: to the running application on the bus, or the one that the bus starts,
  /// and waits for its answer; without such, by the `Exec` line of `<application>.desktop`.
  [[nodiscard]] Failure open(const OpenRequest& request);

 private:
  enum class BusAnswer { kTaken, kFailed, kNobodyThere };

  BusAnswer open_by_bus(GDBusConnection* connection, const OpenRequest& request,
                        std::chrono::steady_clock::time_point deadline, std::string& reason) const;
  [[nodiscard]] Failure open_by_entry(const OpenRequest& request, const std::string& bus_reason);
  [[nodiscard]] std::string in_words(const ErrorSlot& error, const std::string& application) const;

  ActivationTokens tokens_;
  std::chrono::milliseconds time_out_;
  SessionBus bus_;
};

}  // namespace quoll::gio
