#include "quoll/linux/gio/session_bus.h"

#include <algorithm>
#include <cstdint>

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

void SessionBus::flush() {
  if (connection_) {
    g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
  }
}

int call_time_out(std::chrono::steady_clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 1));
}

std::vector<std::string> texts_in(GVariant* parameters, gsize position) {
  const VariantHandle list(g_variant_get_child_value(parameters, position));
  std::vector<std::string> texts;
  for (gsize at = 0; at < g_variant_n_children(list.get()); ++at) {
    const VariantHandle text(g_variant_get_child_value(list.get(), at));
    texts.emplace_back(g_variant_get_string(text.get(), nullptr));
  }
  return texts;
}

}  // namespace quoll::gio
