#pragma once

#include <gio/gio.h>

#include <cstdio>

#include "quoll/linux/gio/handles.h"

namespace quoll::test {

/// Answers on the session bus under a name, with one object of one interface; prints "ready" once
/// it has the name, and never returns.
[[noreturn]] inline void answer_on_the_bus(const char* name, const char* path,
                                           const char* interface,
                                           GDBusInterfaceMethodCallFunc call) {
  const GDBusInterfaceVTable methods{call, nullptr, nullptr, {}};
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  const gio::NodeInfoHandle node(g_dbus_node_info_new_for_xml(interface, nullptr));
  g_dbus_connection_register_object(bus, path, node->interfaces[0], &methods, nullptr, nullptr,
                                    nullptr);
  g_bus_own_name_on_connection(
      bus, name, G_BUS_NAME_OWNER_FLAGS_NONE,
      [](GDBusConnection*, const char*, gpointer) {
        std::puts("ready");
        std::fflush(stdout);
      },
      nullptr, nullptr, nullptr);
  for (;;) {
    g_main_context_iteration(nullptr, TRUE);
  }
}

}  // namespace quoll::test
