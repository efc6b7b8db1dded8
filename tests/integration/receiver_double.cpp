// An application for the tests: it writes down what it was given, and behaves as it is told.
//   receiver_double bus NAME answer|refuse|refuse-at-length|hang|exit|left-out RECORD
//   receiver_double exec RECORD [URI...]
//   receiver_double take tell|wait|stay|fail RECORD [URI...]
// Who is told what was left out is told what RECORD.left-out holds. "take" closes its pipe when it
// has told it: at once, when RECORD.go is there, or never; or it fails.
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
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

std::string left_out() {
  std::ostringstream text;
  text << std::ifstream(record + ".left-out", std::ios::binary).rdbuf();
  return text.str();
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
  if (mode == "refuse-at-length") {
    g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                  std::string(4U << 20U, 'x').c_str());
    return;
  }
  record_open(parameters);
  const quoll::gio::VariantHandle data(g_variant_get_child_value(parameters, 1));
  gboolean wants_report = FALSE;
  if (mode == "left-out" &&
      g_variant_lookup(data.get(), "quoll-report", "b", &wants_report) != FALSE &&
      wants_report != FALSE) {
    g_dbus_method_invocation_return_dbus_error(call, "it.vorlent.quoll2.Error.LeftOut",
                                               left_out().c_str());
    return;
  }
  g_dbus_method_invocation_return_value(call, nullptr);
}

int take(const std::string& how, int count, char** uris) {
  const char* const number = std::getenv("QUOLL_TAKEN_PIPE");
  const int pipe = number != nullptr ? std::atoi(number) : -1;
  if (how == "fail") {
    return 1;
  }
  if (how == "stay") {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
  }
  const std::string text = left_out();
  for (std::size_t at = 0; pipe >= 0 && at < text.size();) {
    const ssize_t wrote = write(pipe, text.data() + at, text.size() - at);
    at = wrote < 0 ? text.size() : at + static_cast<std::size_t>(wrote);
  }
  const int status = record_command_line(count, uris);
  while (how == "stay" || (how == "wait" && !std::filesystem::exists(record + ".go"))) {
    usleep(1000);
  }
  close(pipe);
  usleep(100'000);  // it has more to do
  return status;
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
  if (how == "take" && argc >= 4) {
    record = argv[3];
    return take(argv[2], argc - 4, argv + 4);
  }
  if (how == "exec" && argc >= 3) {
    record = argv[2];
    return record_command_line(argc - 3, argv + 3);
  }
  return 2;
}
