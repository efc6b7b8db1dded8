#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "quoll/linux/gio/handles.h"

namespace quoll::gio {

/// A connection to the session bus. It belongs to a thread that runs the default main context. The
/// constructor begins to connect. It must live until the process ends.
class SessionBus {
 public:
  SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  ~SessionBus() = default;

  /// The connection, waited for until `deadline`; null when there is none, and then `reason` says
  /// why.
  [[nodiscard]] GDBusConnection* connection(std::chrono::steady_clock::time_point deadline);
  [[nodiscard]] std::string reason() const { return reason_; }

  /// Waits until everything is sent.
  void flush();

 private:
  static void connected(GObject* source, GAsyncResult* result, gpointer self);

  bool connecting_ = true;
  ObjectHandle<GDBusConnection> connection_;
  std::string reason_;
};

/// The time-out of a bus call that has to end by then, in milliseconds; never less than 1.
[[nodiscard]] int call_time_out(std::chrono::steady_clock::time_point deadline);

/// The list of texts at a position of a message's parameters.
[[nodiscard]] std::vector<std::string> texts_in(GVariant* parameters, gsize position);

/// Runs the default main context until `done` answers true or `deadline` has passed.
template <typename Done>
void run_main_context_until(std::chrono::steady_clock::time_point deadline, const Done& done) {
  using std::chrono::milliseconds;
  const auto left =
      std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
  bool late = left <= milliseconds::zero();
  const guint alarm = late ? 0
                           : g_timeout_add(
                                 static_cast<guint>(left.count()),
                                 [](gpointer flag) -> gboolean {
                                   *static_cast<bool*>(flag) = true;
                                   return G_SOURCE_CONTINUE;
                                 },
                                 &late);
  while (!done() && !late) {
    g_main_context_iteration(nullptr, TRUE);
  }
  if (alarm != 0) {
    g_source_remove(alarm);
  }
}

}  // namespace quoll::gio
