// The part of KDE that mounts remote files, for the tests: what is on the server "kde" lies in the
// folder that is the argument, and what is on the server "silent" is never answered.
#include <gio/gio.h>

#include <string>
#include <string_view>

#include "tests/integration/bus_double.h"

namespace {

constexpr const char* kInterface = R"(<node><interface name="org.kde.KIOFuse.VFS">
  <method name="mountUrl">
    <arg type="s" direction="in"/><arg type="s" direction="out"/>
  </method>
</interface></node>)";

std::string folder;

void called(GDBusConnection*, const char*, const char*, const char*, const char*,
            GVariant* parameters, GDBusMethodInvocation* call, gpointer) {
  constexpr std::string_view kServer = "smb://kde/";
  const char* url = "";
  g_variant_get(parameters, "(&s)", &url);
  const std::string_view wanted = url;
  if (wanted.starts_with(kServer)) {
    const quoll::gio::TextHandle name(g_uri_unescape_string(url + kServer.size(), nullptr));
    g_dbus_method_invocation_return_value(
        call, g_variant_new("(s)", (folder + "/" + name.get()).c_str()));
  } else if (!wanted.starts_with("smb://silent/")) {
    g_dbus_method_invocation_return_dbus_error(call, "org.kde.KIOFuse.VFS.Error.CannotMount",
                                               "no such server");
  }
}

}  // namespace

int main(int argc, char** argv) {
  folder = argc > 1 ? argv[1] : "";
  quoll::test::answer_on_the_bus("org.kde.KIOFuse", "/org/kde/KIOFuse", kInterface, called);
}
