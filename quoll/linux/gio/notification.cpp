#include "quoll/linux/gio/notification.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

namespace {

constexpr const char* kName = kNotificationsName;
constexpr const char* kPath = kNotificationsPath;

/// The call holds the connection until its reply has come and is released here.
void sent(GObject* bus, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<std::function<void()>> answered(static_cast<std::function<void()>*>(data));
  const VariantHandle reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
  if (*answered) {
    (*answered)();
  }
}

}  // namespace

GVariant* notify_arguments(const std::string& entry, const std::string& summary,
                           const std::string& body,
                           const std::vector<NotificationButton>& buttons) {
  constexpr std::uint32_t kNew = 0;        // replaces no other notification
  constexpr std::int32_t kUsualTime = -1;  // the desktop decides how long it is shown
  // Some desktops read the text as markup.
  const TextHandle plain(g_markup_escape_text(body.data(), static_cast<gssize>(body.size())));
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(entry.c_str()));
  GVariantBuilder actions;
  g_variant_builder_init(&actions, G_VARIANT_TYPE_STRING_ARRAY);
  for (const NotificationButton& button : buttons) {
    g_variant_builder_add(&actions, "s", button.action.c_str());
    g_variant_builder_add(&actions, "s", button.label.c_str());
  }
  return g_variant_new("(susssasa{sv}i)", "Quoll", kNew, "mail-message-new", summary.c_str(),
                       plain.get(), &actions, &hints, kUsualTime);
}

bool show_notification(const std::string& entry, const std::string& summary,
                       const std::string& body, std::chrono::milliseconds time_out) {
  const auto deadline = std::chrono::steady_clock::now() + time_out;
  SessionBus session;
  GDBusConnection* const bus = session.connection(deadline);
  if (bus == nullptr) {
    return false;
  }
  const VariantHandle reply(g_dbus_connection_call_sync(
      bus, kName, kPath, kName, "Notify", notify_arguments(entry, summary, body), nullptr,
      G_DBUS_CALL_FLAGS_NONE, call_time_out(deadline), nullptr, nullptr));
  return reply != nullptr;
}

void send_notification(GDBusConnection* bus, const std::string& entry, const std::string& summary,
                       const std::string& body, std::function<void()> answered) {
  auto data = std::make_unique<std::function<void()>>(std::move(answered));
  g_dbus_connection_call(bus, kName, kPath, kName, "Notify", notify_arguments(entry, summary, body),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, kNotificationPatience, nullptr, sent,
                         data.release());
}

}  // namespace quoll::gio
