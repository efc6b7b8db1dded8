#include "quoll/linux/gio/applications.h"

#include <algorithm>
#include <vector>

#include "quoll/linux/gio/desktop_entry.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

namespace {

using std::chrono::steady_clock;

/// True when `name` is in the list of names that the bus answers to `method`.
bool has_name(GDBusConnection* bus, const char* method, const std::string& name,
              steady_clock::time_point deadline) {
  const VariantHandle reply(g_dbus_connection_call_sync(
      bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, nullptr,
      G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, call_time_out(deadline), nullptr, nullptr));
  const auto names = reply ? texts_in(reply.get(), 0) : std::vector<std::string>();
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

ApplicationLookup look_up_application(const std::string& application,
                                      std::chrono::milliseconds time_out) {
  ApplicationLookup found;
  const auto deadline = steady_clock::now() + time_out;
  SessionBus session;
  if (GDBusConnection* bus = session.connection(deadline); bus != nullptr) {
    found.is_running = has_name(bus, "ListNames", application, deadline);
    found.is_startable = has_name(bus, "ListActivatableNames", application, deadline);
  } else {
    found.bus_trouble = session.reason();
  }
  const EntryHandle entry = find_entry(application);
  found.has_entry = entry != nullptr;
  found.is_entry_broken = !entry && entry_exists(application);
  return found;
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
