// A desktop that shows notifications, for the tests: it prints them.
#include <gio/gio.h>

#include <cstdio>

#include "linux/gio/handles.h"

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kInterface = R"(<node><interface name="org.freedesktop.Notifications">
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
    <arg type="u" direction="out"/>
  </method>
</interface></node>)";

void notify(GDBusConnection*, const char*, const char*, const char*, const char*,
            GVariant* parameters, GDBusMethodInvocation* call, gpointer) {
  const char* summary = nullptr;
  const char* body = nullptr;
  g_variant_get_child(parameters, 3, "&s", &summary);
  g_variant_get_child(parameters, 4, "&s", &body);
  std::printf("%s|%s\n", summary, body);
  std::fflush(stdout);
  g_dbus_method_invocation_return_value(call, g_variant_new("(u)", 1U));
}

}  // namespace

int main() {
  static const GDBusInterfaceVTable methods{notify, nullptr, nullptr, {}};
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  const quoll::gio::NodeInfoHandle node(g_dbus_node_info_new_for_xml(kInterface, nullptr));
  g_dbus_connection_register_object(bus, "/org/freedesktop/Notifications", node->interfaces[0],
                                    &methods, nullptr, nullptr, nullptr);
  g_bus_own_name_on_connection(
      bus, kName, G_BUS_NAME_OWNER_FLAGS_NONE,
      [](GDBusConnection*, const char*, gpointer) {
        std::puts("ready");
        std::fflush(stdout);
      },
      nullptr, nullptr, nullptr);
  for (;;) {
    g_main_context_iteration(nullptr, TRUE);
  }
}
