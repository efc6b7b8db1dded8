#include "quoll/linux/gio/notification_buttons.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/notification.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

using std::chrono::steady_clock;

/// The notifications whose buttons can be pressed, the oldest first. There is one subscription for
/// all: the bus queues each signal for each subscription.
class NotificationButtons::Shown {
 public:
  Shown(GDBusConnection* bus, std::chrono::milliseconds longest)
      : bus_(G_DBUS_CONNECTION(g_object_ref(bus))), longest_(longest) {
    constexpr const char* kBus = "org.freedesktop.DBus";
    signals_ = g_dbus_connection_signal_subscribe(
        bus, kNotificationsName, kNotificationsName, nullptr, kNotificationsPath, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, signalled, this, nullptr);
    owners_ = g_dbus_connection_signal_subscribe(
        bus, kBus, kBus, "NameOwnerChanged", "/org/freedesktop/DBus", kNotificationsName,
        G_DBUS_SIGNAL_FLAGS_NONE, owner_changed, this, nullptr);
    closed_ = g_signal_connect_swapped(bus, "closed", G_CALLBACK(bus_closed), this);
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;
  ~Shown() {
    g_dbus_connection_signal_unsubscribe(bus_.get(), signals_);
    g_dbus_connection_signal_unsubscribe(bus_.get(), owners_);
    g_signal_handler_disconnect(bus_.get(), closed_);
    stop_alarm();
  }

  [[nodiscard]] GDBusConnection* bus() const { return bus_.get(); }
  [[nodiscard]] bool empty() const { return notifications_.empty(); }

  void withdraw() {
    is_withdrawn_ = true;
    for (const Notification& one : std::exchange(notifications_, {})) {
      close(one.number);
    }
    stop_alarm();
  }

  void add(std::uint32_t notification, std::vector<NotificationButton> buttons, Pressed pressed) {
    constexpr std::size_t kMost = 16;
    if (is_withdrawn_) {
      return close(notification);
    }
    remove(notification);  // a number that is given again names the newer one
    notifications_.push_back(
        {notification, steady_clock::now() + longest_, std::move(buttons), std::move(pressed)});
    if (notifications_.size() > kMost) {
      notifications_.pop_front();
    }
    start_alarm();
  }

 private:
  struct Notification {
    std::uint32_t number = 0;  ///< by which the desktop knows it
    steady_clock::time_point end;
    std::vector<NotificationButton> buttons;
    Pressed pressed;
    ActivationTokens tokens{};

    [[nodiscard]] bool has(std::string_view action) const {
      return std::ranges::find(buttons, action, &NotificationButton::action) != buttons.end();
    }
  };

  void close(std::uint32_t notification) {
    g_dbus_connection_call(bus_.get(), kNotificationsName, kNotificationsPath, kNotificationsName,
                           "CloseNotification", g_variant_new("(u)", notification), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, kNotificationPatience, nullptr, nullptr,
                           nullptr);
  }

  std::deque<Notification>::iterator find(std::uint32_t notification) {
    return std::ranges::find(notifications_, notification, &Notification::number);
  }

  void remove(std::uint32_t notification) {
    if (const auto found = find(notification); found != notifications_.end()) {
      notifications_.erase(found);
    }
  }

  void start_alarm() {
    stop_alarm();
    if (!notifications_.empty()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(notifications_.front().end -
                                                                     steady_clock::now());
      alarm_ = g_timeout_add(static_cast<guint>(std::max(left.count(), 1L)), time_is_over, this);
    }
  }

  void stop_alarm() {
    if (alarm_ != 0) {
      g_source_remove(std::exchange(alarm_, 0));
    }
  }

  static gboolean time_is_over(gpointer data) {
    auto& self = *static_cast<Shown*>(data);
    while (!self.notifications_.empty() && self.notifications_.front().end <= steady_clock::now()) {
      self.notifications_.pop_front();
    }
    self.alarm_ = 0;
    self.start_alarm();
    return G_SOURCE_REMOVE;
  }

  /// Another program counts its notifications anew.
  static void owner_changed(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                            const char* /*interface*/, const char* /*member*/,
                            GVariant* /*parameters*/, gpointer data) {
    static_cast<Shown*>(data)->notifications_.clear();
  }

  static void bus_closed(Shown* self) { self->notifications_.clear(); }

  static void signalled(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                        const char* /*interface*/, const char* member, GVariant* parameters,
                        gpointer data) {
    std::uint32_t notification = 0;
    const char* text = "";
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(us)")) != FALSE) {
      g_variant_get(parameters, "(u&s)", &notification, &text);
    } else if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uu)")) != FALSE) {
      g_variant_get(parameters, "(uu)", &notification, nullptr);
    }
    static_cast<Shown*>(data)->tell(notification, member, text);
  }

  void tell(std::uint32_t notification, std::string_view signal, const char* text) {
    constexpr std::size_t kLongestToken = 4096;
    const auto shown = find(notification);
    if (shown == notifications_.end()) {
      return;  // another's
    }
    if (signal == "ActivationToken" && strnlen(text, kLongestToken + 1) <= kLongestToken) {
      shown->tokens.activation = text;
    } else if (signal == "ActionInvoked" && shown->has(text)) {
      const Notification one = std::move(*shown);
      notifications_.erase(shown);
      one.pressed(text, one.tokens);
    } else if (signal == "NotificationClosed") {
      notifications_.erase(shown);
    }
  }

  ObjectHandle<GDBusConnection> bus_;
  std::chrono::milliseconds longest_;
  std::deque<Notification> notifications_;
  guint signals_ = 0, owners_ = 0, alarm_ = 0;
  gulong closed_ = 0;
  bool is_withdrawn_ = false;
};

/// A notification that is being sent. It ends itself when it is answered.
class NotificationButtons::Sending {
 public:
  Sending(std::shared_ptr<Shown> shown, std::string entry, std::string summary, std::string body,
          std::vector<NotificationButton> buttons, std::function<void()> answered, Pressed pressed)
      : shown_(std::move(shown)),
        entry_(std::move(entry)),
        summary_(std::move(summary)),
        body_(std::move(body)),
        buttons_(std::move(buttons)),
        answered_(std::move(answered)),
        pressed_(std::move(pressed)) {}

  void begin() { call("GetCapabilities", nullptr, capabilities_known); }

 private:
  void call(const char* method, GVariant* arguments, GAsyncReadyCallback done) {
    g_dbus_connection_call(shown_->bus(), kNotificationsName, kNotificationsPath,
                           kNotificationsName, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
                           kNotificationPatience, nullptr, done, this);
  }

  static VariantHandle reply_to(GObject* bus, GAsyncResult* result, const char* type) {
    VariantHandle reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE(type)) == FALSE) {
      reply.reset();
    }
    return reply;
  }

  static void capabilities_known(GObject* bus, GAsyncResult* result, gpointer data) {
    auto* const self = static_cast<Sending*>(data);
    const VariantHandle reply = reply_to(bus, result, "(as)");
    const auto capabilities = reply ? texts_in(reply.get(), 0) : std::vector<std::string>();
    if (std::ranges::find(capabilities, "actions") == capabilities.end()) {
      self->buttons_.clear();
    }
    self->call("Notify",
               notify_arguments(self->entry_, self->summary_, self->body_, self->buttons_),
               notified);
  }

  static void notified(GObject* bus, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Sending> self(static_cast<Sending*>(data));
    const VariantHandle reply = reply_to(bus, result, "(u)");
    if (reply && !self->buttons_.empty()) {
      std::uint32_t notification = 0;
      g_variant_get(reply.get(), "(u)", &notification);
      self->shown_->add(notification, std::move(self->buttons_), std::move(self->pressed_));
    }
    self->answered_();
  }

  std::shared_ptr<Shown> shown_;
  std::string entry_, summary_, body_;
  std::vector<NotificationButton> buttons_;
  std::function<void()> answered_;
  Pressed pressed_;
};

NotificationButtons::NotificationButtons(GDBusConnection* bus, std::chrono::milliseconds longest)
    : shown_(std::make_shared<Shown>(bus, longest)) {}

NotificationButtons::~NotificationButtons() = default;

void NotificationButtons::send(const std::string& entry, const std::string& summary,
                               const std::string& body, std::vector<NotificationButton> buttons,
                               std::function<void()> answered, Pressed pressed) {
  auto sending = std::make_unique<Sending>(shown_, entry, summary, body, std::move(buttons),
                                           std::move(answered), std::move(pressed));
  sending.release()->begin();
}

void NotificationButtons::withdraw() {
  shown_->withdraw();
}

bool NotificationButtons::empty() const {
  return shown_->empty();
}

}  // namespace quoll::gio
