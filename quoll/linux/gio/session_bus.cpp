#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

SessionBus::SessionBus() {
  g_bus_get(G_BUS_TYPE_SESSION, nullptr, connected, this);
}

void SessionBus::connected(GObject* /*source*/, GAsyncResult* result, gpointer self) {
  auto& bus = *static_cast<SessionBus*>(self);
  ErrorSlot error;
  bus.connection_.reset(g_bus_get_finish(result, error.out()));
  bus.connecting_ = false;
  bus.reason_ = error.message();
  if (bus.connection_) {
    // Otherwise GIO ends this process when the bus ends, and nobody gets to know a reason.
    g_dbus_connection_set_exit_on_close(bus.connection_.get(), FALSE);
  }
}

GDBusConnection* SessionBus::connection(std::chrono::steady_clock::time_point deadline) {
  run_main_context_until(deadline, [this] { return !connecting_; });
  if (connecting_) {
    reason_ = "it does not answer";
  }
  return connection_.get();
}

}  // namespace quoll::gio
