#include "quoll/linux/gio/applications.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "quoll/linux/gio/desktop_entry.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/opener.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

namespace {

using std::chrono::steady_clock;

/// What the bus itself answers to `method`; null when it does not.
VariantHandle ask_bus(GDBusConnection* bus, const char* method, GVariant* parameters,
                      const char* reply_type, steady_clock::time_point deadline) {
  return VariantHandle(g_dbus_connection_call_sync(
      bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
      parameters, G_VARIANT_TYPE(reply_type), G_DBUS_CALL_FLAGS_NONE, call_time_out(deadline),
      nullptr, nullptr));
}

/// True when `name` is in the list of names that the bus answers to `method`.
bool has_name(GDBusConnection* bus, const char* method, const std::string& name,
              steady_clock::time_point deadline) {
  const auto reply = ask_bus(bus, method, nullptr, "(as)", deadline);
  const auto names = reply ? texts_in(reply.get(), 0) : std::vector<std::string>();
  return std::ranges::find(names, name) != names.end();
}

int process_of(GDBusConnection* bus, const std::string& name, steady_clock::time_point deadline) {
  const auto reply = ask_bus(bus, "GetConnectionUnixProcessID", g_variant_new("(s)", name.c_str()),
                             "(u)", deadline);
  guint32 process = 0;
  if (reply) {
    g_variant_get(reply.get(), "(u)", &process);
  }
  return static_cast<int>(process);
}

}  // namespace

ApplicationLookup look_up_application(const std::string& application,
                                      std::chrono::milliseconds time_out) {
  ApplicationLookup found;
  const auto deadline = steady_clock::now() + time_out;
  SessionBus session;
  if (GDBusConnection* bus = session.connection(deadline); bus != nullptr) {
    found.is_running = has_name(bus, "ListNames", application, deadline);
    found.process = found.is_running ? process_of(bus, application, deadline) : 0;
    found.is_startable = has_name(bus, "ListActivatableNames", application, deadline);
  } else {
    found.bus_trouble = session.reason();
  }
  ServiceFile file = service_file(application);
  found.service_program = std::move(file.program);
  found.service_file = std::move(file.path);
  const EntryHandle entry = find_entry(application);
  found.has_entry = entry != nullptr;
  found.broken_entry = entry ? "" : entry_file(application);
  found.entry_program = entry ? g_app_info_get_executable(G_APP_INFO(entry.get())) : "";
  return found;
}

ServiceFile service_file(const std::string& application) {
  ServiceFile found;
  found.path = find_data_file("dbus-1/services/" + application + ".service");
  const KeyFileHandle file(g_key_file_new());
  g_key_file_load_from_file(file.get(), found.path.c_str(), G_KEY_FILE_NONE, nullptr);
  const TextHandle exec(g_key_file_get_string(file.get(), "D-BUS Service", "Exec", nullptr));
  char** words = nullptr;
  if (exec && g_shell_parse_argv(exec.get(), nullptr, &words, nullptr) != FALSE) {
    found.program = words[0];  // the first word of the command
    g_strfreev(words);
  }
  return found;
}

std::string missing_program(const std::string& program, const std::string& file) {
  const bool is_there = g_file_test(program.c_str(), G_FILE_TEST_EXISTS) != FALSE;
  return program + ", which " + file + " starts, " +
         (is_there ? "cannot be run" : "does not exist");
}

std::string advice_on_missing_program(const std::string& file) {
  return file.starts_with(std::string(g_get_home_dir()) + "/")
             ? "remove " + file
             : "install the package of " + file + " again";
}

ActivationAnswer activate_application(const std::string& application,
                                      std::chrono::milliseconds time_out) {
  Opener opener({}, time_out);
  ActivationAnswer answer;
  answer.is_there = opener.activate(application, answer.failure, answer.advice);
  return answer;
}

bool is_program(const std::string& program) {
  return TextHandle(g_find_program_in_path(program.c_str())) != nullptr;
}

std::string handler_of_scheme(const std::string& scheme) {
  const ObjectHandle<GAppInfo> handler(g_app_info_get_default_for_uri_scheme(scheme.c_str()));
  const char* id = handler ? g_app_info_get_id(handler.get()) : nullptr;
  return id != nullptr ? id : "";
}

bool set_handler_of_scheme(const std::string& application, const std::string& scheme) {
  const EntryHandle entry = find_entry(application);
  const std::string type = "x-scheme-handler/" + scheme;
  return entry && g_app_info_set_as_default_for_type(G_APP_INFO(entry.get()), type.c_str(),
                                                     nullptr) != FALSE;
}

std::string find_data_file(const std::string& name) {
  std::vector<std::string> folders{g_get_user_data_dir()};
  for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
    folders.emplace_back(*folder);
  }
  for (const std::string& folder : folders) {
    const TextHandle file(g_build_filename(folder.c_str(), name.c_str(), nullptr));
    if (g_file_test(file.get(), G_FILE_TEST_EXISTS) != FALSE) {
      return file.get();
    }
  }
  return "";
}

}  // namespace quoll::gio
