#include "quoll/linux/gio/notification.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr int kPatience = 5000;  // in milliseconds, for each answer
constexpr const char* kAction = "open";

/// With a button unless its label is empty.
GVariant* parameters(const std::string& entry, const std::string& summary, const std::string& body,
                     const std::string& label = "") {
  constexpr std::uint32_t kNew = 0;        // replaces no other notification
  constexpr std::int32_t kUsualTime = -1;  // the desktop decides how long it is shown
  // Some desktops read the text as markup.
  const TextHandle plain(g_markup_escape_text(body.data(), static_cast<gssize>(body.size())));
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(entry.c_str()));
  GVariantBuilder actions;
  g_variant_builder_init(&actions, G_VARIANT_TYPE_STRING_ARRAY);
  if (!label.empty()) {
    g_variant_builder_add(&actions, "s", kAction);
    g_variant_builder_add(&actions, "s", label.c_str());
  }
  return g_variant_new("(susssasa{sv}i)", "Quoll", kNew, "mail-message-new", summary.c_str(),
                       plain.get(), &actions, &hints, kUsualTime);
}

/// The call holds the connection until its reply has come and is released here.
void sent(GObject* bus, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<std::function<void()>> answered(static_cast<std::function<void()>*>(data));
  const VariantHandle reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
  if (*answered) {
    (*answered)();
  }
}

/// A notification with a button, from its sending to its end, when it deletes itself.
class NotificationWithAction {
 public:
  NotificationWithAction(GDBusConnection* bus, std::function<void()> answered,
                         NotificationAction action)
      : bus_(G_DBUS_CONNECTION(g_object_ref(bus))),
        answered_(std::move(answered)),
        action_(std::move(action)) {}

  void begin(std::string entry, std::string summary, std::string body) {
    entry_ = std::move(entry);
    summary_ = std::move(summary);
    body_ = std::move(body);
    if (action_.label.empty()) {
      notify("");
    } else {
      call("GetCapabilities", nullptr, capabilities_known);
    }
  }

 private:
  void call(const char* method, GVariant* parameters, GAsyncReadyCallback done) {
    g_dbus_connection_call(bus_.get(), kName, kPath, kName, method, parameters, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, kPatience, nullptr, done, this);
  }

  static void capabilities_known(GObject* bus, GAsyncResult* result, gpointer data) {
    auto* const self = static_cast<NotificationWithAction*>(data);
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
    bool has_buttons = false;
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(as)")) != FALSE) {
      const auto capabilities = texts_in(reply.get(), 0);
      has_buttons = std::ranges::find(capabilities, "actions") != capabilities.end();
    }
    if (has_buttons) {
      self->signals_ = g_dbus_connection_signal_subscribe(self->bus_.get(), kName, kName, nullptr,
                                                          kPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                          signalled, self, nullptr);
    }
    self->notify(has_buttons ? self->action_.label : "");
  }

  void notify(const std::string& label) {
    call("Notify", parameters(entry_, summary_, body_, label), shown);
  }

  static void shown(GObject* bus, GAsyncResult* result, gpointer data) {
    auto* const self = static_cast<NotificationWithAction*>(data);
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
    if (self->answered_) {
      self->answered_();
    }
    if (self->signals_ == 0 || !reply ||
        g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(u)")) == FALSE) {
      self->end();
      return;
    }
    g_variant_get(reply.get(), "(u)", &self->number_);
    self->alarm_ =
        g_timeout_add(static_cast<guint>(self->action_.longest.count()), time_is_over, self);
  }

  static void signalled(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                        const char* /*interface*/, const char* member, GVariant* parameters,
                        gpointer data) {
    auto* const self = static_cast<NotificationWithAction*>(data);
    const std::string_view name = member;
    const bool has_text = g_variant_is_of_type(parameters, G_VARIANT_TYPE("(us)")) != FALSE;
    std::uint32_t number = 0;
    const char* text = "";
    if (has_text) {
      g_variant_get(parameters, "(u&s)", &number, &text);
    } else if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uu)")) != FALSE) {
      g_variant_get(parameters, "(uu)", &number, nullptr);
    }
    if (self->alarm_ == 0 || number != self->number_) {
      return;  // another's
    }
    if (name == "ActivationToken" && has_text) {
      self->tokens_.activation = text;
    } else if (name == "ActionInvoked" && std::string_view(text) == kAction) {
      self->action_.chosen(self->tokens_);
      self->end();
    } else if (name == "NotificationClosed") {
      self->end();
    }
  }

  static gboolean time_is_over(gpointer self) {
    static_cast<NotificationWithAction*>(self)->end();
    return G_SOURCE_CONTINUE;  // it is removed already
  }

  void end() {
    if (signals_ != 0) {
      g_dbus_connection_signal_unsubscribe(bus_.get(), signals_);
    }
    if (alarm_ != 0) {
      g_source_remove(alarm_);
    }
    if (action_.ended) {
      action_.ended();
    }
    delete this;
  }

  ObjectHandle<GDBusConnection> bus_;
  std::string entry_, summary_, body_;
  std::function<void()> answered_;
  NotificationAction action_;
  ActivationTokens tokens_;
  guint signals_ = 0;         ///< the subscription, when there are buttons
  guint alarm_ = 0;           ///< while it is shown
  std::uint32_t number_ = 0;  ///< by which the desktop knows it
};

}  // namespace

bool show_notification(const std::string& entry, const std::string& summary,
                       const std::string& body, std::chrono::milliseconds time_out) {
  const auto deadline = std::chrono::steady_clock::now() + time_out;
  SessionBus session;
  GDBusConnection* const bus = session.connection(deadline);
  if (bus == nullptr) {
    return false;
  }
  const VariantHandle reply(g_dbus_connection_call_sync(
      bus, kName, kPath, kName, "Notify", parameters(entry, summary, body), nullptr,
      G_DBUS_CALL_FLAGS_NONE, call_time_out(deadline), nullptr, nullptr));
  return reply != nullptr;
}

void send_notification(GDBusConnection* bus, const std::string& entry, const std::string& summary,
                       const std::string& body, std::function<void()> answered) {
  auto data = std::make_unique<std::function<void()>>(std::move(answered));
  g_dbus_connection_call(bus, kName, kPath, kName, "Notify", parameters(entry, summary, body),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, kPatience, nullptr, sent, data.release());
}

void send_notification(GDBusConnection* bus, const std::string& entry, const std::string& summary,
                       const std::string& body, std::function<void()> answered,
                       NotificationAction action) {
  auto notification =
      std::make_unique<NotificationWithAction>(bus, std::move(answered), std::move(action));
  notification.release()->begin(entry, summary, body);
}

}  // namespace quoll::gio
