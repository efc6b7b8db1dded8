// A file manager and a portal, for the tests. With "files" it is the file manager: it prints the
// URLs that it shall show, and the token. With "0", "1" or "2" it is the portal that asks which
// program shall open a file: it prints the file's path and what came with it, and answers with that
// number, as a person who chooses, one who cancels, or a desktop that cannot ask.
#include <fcntl.h>
#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/integration/bus_double.h"

namespace {

constexpr const char* kFileManager = R"(<node><interface name="org.freedesktop.FileManager1">
  <method name="ShowItems"><arg type="as" direction="in"/><arg type="s" direction="in"/></method>
</interface></node>)";

constexpr const char* kPortal = R"(<node><interface name="org.freedesktop.portal.OpenURI">
  <method name="OpenFile">
    <arg type="s" direction="in"/><arg type="h" direction="in"/><arg type="a{sv}" direction="in"/>
    <arg type="o" direction="out"/>
  </method>
</interface></node>)";

std::string role;

void show(GVariant* parameters, GDBusMethodInvocation* call) {
  GVariantIter* uris = nullptr;
  const char* token = nullptr;
  g_variant_get(parameters, "(as&s)", &uris, &token);
  const char* uri = nullptr;
  while (g_variant_iter_next(uris, "&s", &uri) != FALSE) {
    std::printf("%s\n", uri);
  }
  g_variant_iter_free(uris);
  std::printf("token=%s\n", token);
  g_dbus_method_invocation_return_value(call, nullptr);
}

std::string path_of_only_file(GDBusMethodInvocation* call) {
  GUnixFDList* const files =
      g_dbus_message_get_unix_fd_list(g_dbus_method_invocation_get_message(call));
  const int file = g_unix_fd_list_get(files, 0, nullptr);
  std::array<char, PATH_MAX> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const auto size = readlink(link.c_str(), path.data(), path.size());
  close(file);
  return {path.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

void ask(GDBusConnection* bus, GVariant* parameters, GDBusMethodInvocation* call) {
  const quoll::gio::VariantHandle options(g_variant_get_child_value(parameters, 2));
  const char* token = "";
  const char* handle = "";
  gboolean is_asked = FALSE;
  g_variant_lookup(options.get(), "activation_token", "&s", &token);
  g_variant_lookup(options.get(), "handle_token", "&s", &handle);
  g_variant_lookup(options.get(), "ask", "b", &is_asked);
  std::printf("%s%s\ntoken=%s\n", is_asked != FALSE ? "asked: " : "",
              path_of_only_file(call).c_str(), token);
  std::string sender = g_dbus_method_invocation_get_sender(call);
  sender.erase(0, 1);
  for (char& c : sender) {
    c = c == '.' ? '_' : c;
  }
  const std::string request = "/org/freedesktop/portal/desktop/request/" + sender + "/" + handle;
  g_dbus_method_invocation_return_value(call, g_variant_new("(o)", request.c_str()));
  GVariantBuilder nothing;
  g_variant_builder_init(&nothing, G_VARIANT_TYPE_VARDICT);
  g_dbus_connection_emit_signal(
      bus, nullptr, request.c_str(), "org.freedesktop.portal.Request", "Response",
      g_variant_new("(ua{sv})", static_cast<std::uint32_t>(std::atoi(role.c_str())), &nothing),
      nullptr);
}

void called(GDBusConnection* bus, const char* /*sender*/, const char* /*path*/,
            const char* /*interface*/, const char* /*method*/, GVariant* parameters,
            GDBusMethodInvocation* call, gpointer /*data*/) {
  if (role == "files") {
    show(parameters, call);
  } else {
    ask(bus, parameters, call);
  }
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  role = argc > 1 ? argv[1] : "";
  if (role == "files") {
    quoll::test::answer_on_the_bus("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                   kFileManager, called);
  } else {
    quoll::test::answer_on_the_bus("org.freedesktop.portal.Desktop",
                                   "/org/freedesktop/portal/desktop", kPortal, called);
  }
}
