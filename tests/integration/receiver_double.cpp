// An application for the tests: it writes down what it was given, and behaves as it is told.
//   receiver_double bus NAME answer|refuse|hang|exit RECORD
//   receiver_double exec RECORD [URI...]
#include <gio/gio.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/opener.h"
#include "tests/integration/bus_double.h"

namespace {

constexpr const char* kInterface = R"(<node><interface name="org.freedesktop.Application">
  <method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
</interface></node>)";

std::string mode;
std::string record;

// In one step, since the test waits for the file.
void write_record(const std::string& text) {
  std::ofstream(record + ".part", std::ios::binary) << text;
  std::filesystem::rename(record + ".part", record);
}

void record_open(GVariant* parameters) {
  const quoll::gio::VariantHandle uris(g_variant_get_child_value(parameters, 0));
  const quoll::gio::VariantHandle data(g_variant_get_child_value(parameters, 1));
  std::string text;
  for (gsize at = 0; at < g_variant_n_children(uris.get()); ++at) {
    const quoll::gio::VariantHandle uri(g_variant_get_child_value(uris.get(), at));
    text += std::string("uri ") + g_variant_get_string(uri.get(), nullptr) + "\n";
  }
  for (const char* key : {"activation-token", "desktop-startup-id"}) {
    const char* value = nullptr;
    if (g_variant_lookup(data.get(), key, "&s", &value) != FALSE) {
      text += std::string(key) + " " + value + "\n";
    }
  }
  write_record(text);
}

void called(GDBusConnection*, const char*, const char*, const char*, const char*,
            GVariant* parameters, GDBusMethodInvocation* call, gpointer) {
  if (mode == "exit") {
    _exit(0);
  }
  if (mode == "hang") {
    return;  // the call is never answered
  }
  if (mode == "refuse") {
    g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                  "the disk is full");
    return;
  }
  record_open(parameters);
  g_dbus_method_invocation_return_value(call, nullptr);
}

int record_command_line(int count, char** uris) {
  std::string text;
  for (int at = 0; at < count; ++at) {
    text += std::string("uri ") + uris[at] + "\n";
  }
  for (const char* variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID", "GIO_MODULE_DIR"}) {
    const char* value = std::getenv(variable);
    text += value != nullptr ? std::string(variable) + " " + value + "\n" : "";
  }
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the descriptor that lists them
    const auto target = std::filesystem::read_symlink(entry.path(), gone);
    if (!gone && !target.string().starts_with("/proc/")) {
      text += "fd " + target.string() + "\n";
    }
  }
  write_record(text);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string how = argc > 1 ? argv[1] : "";
  if (how == "bus" && argc == 5) {
    mode = argv[3];
    record = argv[4];
    quoll::test::answer_on_the_bus(argv[2], quoll::gio::object_path(argv[2]).c_str(), kInterface,
                                   called);
  }
  if (how == "exec" && argc >= 3) {
    record = argv[2];
    return record_command_line(argc - 3, argv + 3);
  }
  return 2;
}
