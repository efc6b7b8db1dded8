#include "quoll/linux/gio/show_files.h"

#include <chrono>

#include "quoll/linux/gio/desktop_entry.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {
namespace {

constexpr std::chrono::seconds kFileManagerTime{30};  // it may have to be started

std::string uri_of(const std::string& path) {
  const TextHandle uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  return uri.get();  // never null: the path is absolute
}

bool select_files(const std::string& folder, const std::vector<std::string>& names,
                  const ActivationTokens& tokens) {
  constexpr const char* kFileManager = "org.freedesktop.FileManager1";
  const auto deadline = std::chrono::steady_clock::now() + kFileManagerTime;
  SessionBus session;
  GDBusConnection* const bus = session.connection(deadline);
  if (bus == nullptr || names.empty()) {
    return false;
  }
  GVariantBuilder uris;
  g_variant_builder_init(&uris, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string& name : names) {
    const std::string path = std::string(folder).append("/").append(name);
    g_variant_builder_add(&uris, "s", uri_of(path).c_str());
  }
  const std::string& token = tokens.activation.empty() ? tokens.startup : tokens.activation;
  const VariantHandle reply(g_dbus_connection_call_sync(
      bus, kFileManager, "/org/freedesktop/FileManager1", kFileManager, "ShowItems",
      g_variant_new("(ass)", &uris, token.c_str()), nullptr, G_DBUS_CALL_FLAGS_NONE,
      call_time_out(deadline), nullptr, nullptr));
  return reply != nullptr;
}

}  // namespace

FailureReason show_files(const std::string& folder, const std::vector<std::string>& names,
                         const ActivationTokens& tokens) {
  if (select_files(folder, names, tokens)) {
    return std::nullopt;
  }
  constexpr gboolean kTakesUris = TRUE;
  const ObjectHandle<GAppInfo> opener(
      g_app_info_get_default_for_type("inode/directory", kTakesUris));
  if (!G_IS_DESKTOP_APP_INFO(opener.get())) {
    return "no file manager is here";
  }
  return start_program(G_DESKTOP_APP_INFO(opener.get()),
                       {.uris = {uri_of(folder)}, .arguments = {}, .tokens = tokens});
}

}  // namespace quoll::gio
