// A desktop that shows notifications, for the tests: it prints them.
#include <gio/gio.h>

#include <cstdio>
#include <string_view>

#include "tests/integration/bus_double.h"

namespace {

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
  const quoll::gio::VariantHandle hints(g_variant_get_child_value(parameters, 6));
  const char* entry = "";
  g_variant_lookup(hints.get(), "desktop-entry", "&s", &entry);
  const bool is_ours = std::string_view(entry).starts_with("it.vorlent.quoll2");
  std::printf("%s%s|%s\n", is_ours ? "" : "of nobody: ", summary, body);
  std::fflush(stdout);
  g_dbus_method_invocation_return_value(call, g_variant_new("(u)", 1U));
}

}  // namespace

int main() {
  quoll::test::answer_on_the_bus("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                 kInterface, notify);
}
