// A desktop that shows notifications, for the tests: it prints them. With an argument it has
// buttons, which it prints too: with "press" a person presses the first of each, with
// "press:ACTION" one that has that action, with "close" the notification
// is closed, with "leave" only those of another program are pressed and closed. With "later:FILE"
// the numbers of the notifications whose buttons are pressed are written into that file, a line
// each; with "same:FILE" too, but all notifications have the number 1.
#include <gio/gio.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/integration/bus_double.h"

namespace {

constexpr const char* kInterface = R"(<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
    <arg type="u" direction="out"/>
  </method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
</interface></node>)";

std::string person;
std::string first_action;  ///< of the notification that was shown last

void emit(GDBusConnection* bus, const char* signal, GVariant* parameters) {
  g_dbus_connection_emit_signal(bus, nullptr, "/org/freedesktop/Notifications",
                                "org.freedesktop.Notifications", signal, parameters, nullptr);
}

void press(GDBusConnection* bus, std::uint32_t number, const char* action) {
  emit(bus, "ActivationToken", g_variant_new("(us)", number, "token-9"));
  emit(bus, "ActionInvoked", g_variant_new("(us)", number, action));
}

bool does(std::string_view what) {
  return person.starts_with(what);
}

gboolean press_named(gpointer bus) {
  const std::string file = person.substr(person.find(':') + 1);
  if (std::ifstream numbers(file); numbers) {
    std::remove(file.c_str());
    for (std::uint32_t number = 0; numbers >> number;) {
      press(static_cast<GDBusConnection*>(bus), number, first_action.c_str());
    }
  }
  return G_SOURCE_CONTINUE;
}

void be_that_person(GDBusConnection* bus, std::uint32_t number, const char* action) {
  constexpr std::uint32_t kClosedByAPerson = 2;
  const std::uint32_t pressed = person == "leave" ? number + 100 : number;
  if (person != "close") {
    press(bus, pressed, action);
  }
  emit(bus, "NotificationClosed", g_variant_new("(uu)", pressed, kClosedByAPerson));
}

void called(GDBusConnection* bus, const char*, const char*, const char*, const char* method,
            GVariant* parameters, GDBusMethodInvocation* call, gpointer) {
  if (std::string_view(method) == "GetCapabilities") {
    const char* const capabilities[] = {"body", person.empty() ? nullptr : "actions", nullptr};
    g_dbus_method_invocation_return_value(call, g_variant_new("(^as)", capabilities));
    return;
  }
  if (std::string_view(method) == "CloseNotification") {
    std::uint32_t closed = 0;
    g_variant_get(parameters, "(u)", &closed);
    std::printf("closed %u\n", closed);
    std::fflush(stdout);
    g_dbus_method_invocation_return_value(call, nullptr);
    return;
  }
  const char* summary = nullptr;
  const char* body = nullptr;
  g_variant_get_child(parameters, 3, "&s", &summary);
  g_variant_get_child(parameters, 4, "&s", &body);
  const quoll::gio::VariantHandle hints(g_variant_get_child_value(parameters, 6));
  const char* entry = "";
  g_variant_lookup(hints.get(), "desktop-entry", "&s", &entry);
  const bool is_ours = std::string_view(entry).starts_with("it.vorlent.quoll2");
  std::printf("%s%s|%s\n", is_ours ? "" : "of nobody: ", summary, body);
  const quoll::gio::VariantHandle actions(g_variant_get_child_value(parameters, 5));
  const gsize words = g_variant_n_children(actions.get());
  const bool has_button = words >= 2;
  const char* action = "";
  for (gsize at = 0; at + 1 < words; at += 2) {
    const char* label = "";
    g_variant_get_child(actions.get(), at + 1, "&s", &label);
    std::printf("[%s]\n", label);
  }
  if (has_button) {
    g_variant_get_child(actions.get(), 0, "&s", &action);
    first_action = action;
  }
  std::fflush(stdout);
  static std::uint32_t number = 0;
  number = does("same:") ? 1 : number + 1;
  g_dbus_method_invocation_return_value(call, g_variant_new("(u)", number));
  if (does("later:") || does("same:")) {
    static const guint timer = g_timeout_add(10, press_named, bus);
    static_cast<void>(timer);
  } else if (has_button) {
    be_that_person(bus, number, does("press:") ? person.c_str() + 6 : action);
  }
}

}  // namespace

int main(int argc, char** argv) {
  person = argc > 1 ? argv[1] : "";
  quoll::test::answer_on_the_bus("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                 kInterface, called);
}
