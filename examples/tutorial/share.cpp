// Shares the bytes of a text. The service does everything else, so the library is not needed.
#include <gio/gio.h>

#include <cstdio>
#include <string_view>

int main() {
  GError* error = nullptr;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  GVariant* answer = nullptr;
  if (bus != nullptr) {
    constexpr std::string_view kContent = "the content";
    GVariant* request = g_variant_new_parsed(
        "({'title': <'Notes'>, 'items': <[{'name': <'notes.txt'>, 'bytes': <%@ay>}]>},)",
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, kContent.data(), kContent.size(), 1));
    constexpr int kPatience = 600000;  // milliseconds: a share waits for the shares before it
    answer = g_dbus_connection_call_sync(
        bus, "it.vorlent.quoll2.Quoll-Share", "/it/vorlent/quoll2/Quoll_Share",
        "it.vorlent.quoll2.Share1", "Share", request, G_VARIANT_TYPE("(us)"),
        G_DBUS_CALL_FLAGS_NONE, kPatience, nullptr, &error);
  }
  if (answer == nullptr) {
    std::fprintf(stderr, "%s\n", error->message);
    return 1;
  }
  guint32 code = 0;
  const char* told = nullptr;
  g_variant_get(answer, "(u&s)", &code, &told);
  std::printf("code %u%s%s\n", code, *told == '\0' ? "" : ": ", told);
  g_variant_unref(answer);
  g_object_unref(bus);
  return static_cast<int>(code);
}
