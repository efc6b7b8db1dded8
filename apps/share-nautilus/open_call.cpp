#include "apps/share-nautilus/open_call.h"

#include <dlfcn.h>
#include <gio/gdesktopappinfo.h>
#include <nautilus-extension.h>

#include <string>
#include <utility>

#include "apps/share/identifier.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/notification.h"

namespace quoll::share_nautilus {

namespace {

using gio::ObjectHandle;
using gio::TextHandle;

constexpr const char* kPath = "/it/vorlent/quoll2/Quoll_Share";
constexpr int kTimeOutMilliseconds = 20'000;

bool is_file(const TextHandle& uri) {
  return uri && g_str_has_prefix(uri.get(), "file:") != FALSE;
}

/// The URI by which other programs reach the file: what is in the trash, recently used or on
/// another computer has a place among the files too. Null when it is gone.
TextHandle uri_of(NautilusFileInfo* file) {
  TextHandle uri(nautilus_file_info_get_uri(file));
  if (is_file(uri)) {
    return uri;
  }
  TextHandle activation(nautilus_file_info_get_activation_uri(file));
  if (is_file(activation)) {
    return activation;
  }
  const ObjectHandle<GFile> location(nautilus_file_info_get_location(file));
  const TextHandle path(location ? g_file_get_path(location.get()) : nullptr);
  TextHandle mounted(path ? g_filename_to_uri(path.get(), nullptr, nullptr) : nullptr);
  return mounted ? std::move(mounted) : std::move(uri);
}

/// What lets the compose window come to the front; null when the display gives nothing. The display
/// belongs to the file manager: its toolkit is there in this process, or it is not needed.
TextHandle activation_token() {
  using GetDisplay = gpointer (*)();
  using GetContext = GAppLaunchContext* (*)(gpointer);
  const auto get_display =
      reinterpret_cast<GetDisplay>(dlsym(RTLD_DEFAULT, "gdk_display_get_default"));
  const auto get_context =
      reinterpret_cast<GetContext>(dlsym(RTLD_DEFAULT, "gdk_display_get_app_launch_context"));
  void* const display = get_display != nullptr ? get_display() : nullptr;
  const TextHandle file(g_strconcat(share::kIdentifier, ".desktop", nullptr));
  const ObjectHandle<GDesktopAppInfo> entry(g_desktop_app_info_new(file.get()));
  if (display == nullptr || get_context == nullptr || !entry) {
    return nullptr;
  }
  const ObjectHandle<GAppLaunchContext> context(get_context(display));
  return TextHandle(context ? g_app_launch_context_get_startup_notify_id(
                                  context.get(), G_APP_INFO(entry.get()), nullptr)
                            : nullptr);
}

/// The parameters of `Open`; floating.
GVariant* parameters_of(GList* files) {
  g_auto(GVariantBuilder) uris = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE_STRING_ARRAY);
  for (const GList* at = files; at != nullptr; at = at->next) {
    const TextHandle uri = uri_of(NAUTILUS_FILE_INFO(at->data));
    if (uri && g_utf8_validate(uri.get(), -1, nullptr) != FALSE) {
      g_variant_builder_add(&uris, "s", uri.get());
    }
  }
  g_auto(GVariantBuilder) platform_data = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE_VARDICT);
  if (const TextHandle token = activation_token()) {
    for (const char* const key : {"activation-token", "desktop-startup-id"}) {
      g_variant_builder_add(&platform_data, "{sv}", key, g_variant_new_string(token.get()));
    }
  }
  return g_variant_new("(asa{sv})", &uris, &platform_data);
}

/// What a person is told.
std::string in_words(const gio::ErrorSlot& error) {
  if (error.is(G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN)) {
    return "The program that shares is not there; install quoll-share";
  }
  if (error.is(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY)) {
    return "The share ended early; choose the entry again";
  }
  if (error.is(G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) {
    return "The share did not begin within " + std::to_string(kTimeOutMilliseconds / 1000) +
           " s; choose the entry again";
  }
  g_dbus_error_strip_remote_error(error.get());
  return "It was refused: " + error.message();
}

void answered(GObject* bus, GAsyncResult* result, gpointer /*data*/) {
  gio::ErrorSlot error;
  const gio::VariantHandle reply(
      g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, error.out()));
  if (reply) {
    return;
  }
  try {
    gio::send_notification(G_DBUS_CONNECTION(bus), share::kIdentifier, "Nothing was shared",
                           in_words(error) + ".");
  } catch (...) {
    g_warning("nothing was shared, and there is no memory to say why");
  }
}

void connected(GObject* /*source*/, GAsyncResult* result, gpointer data) {
  const gio::VariantHandle parameters(static_cast<GVariant*>(data));
  gio::ErrorSlot error;
  const ObjectHandle<GDBusConnection> bus(g_bus_get_finish(result, error.out()));
  if (!bus) {
    g_warning("nothing was shared: there is no session bus: %s", error.get()->message);
    return;
  }
  g_dbus_connection_call(bus.get(), share::kIdentifier, kPath, "org.freedesktop.Application",
                         "Open", parameters.get(), nullptr, G_DBUS_CALL_FLAGS_NONE,
                         kTimeOutMilliseconds, nullptr, answered, nullptr);
}

}  // namespace

void call_open(GList* files) noexcept {
  g_bus_get(G_BUS_TYPE_SESSION, nullptr, connected, g_variant_ref_sink(parameters_of(files)));
}

}  // namespace quoll::share_nautilus
