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

namespace {

using std::chrono::steady_clock;

constexpr const char* kAction = "open";

}  // namespace

/// The buttons that can be pressed, the oldest first. There is one subscription for all: the bus
/// queues each signal for each subscription.
class NotificationButtons::Shown {
 public:
  Shown(GDBusConnection* bus, std::string label, std::chrono::milliseconds longest)
      : bus_(G_DBUS_CONNECTION(g_object_ref(bus))), label_(std::move(label)), longest_(longest) {
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
  [[nodiscard]] const std::string& label() const { return label_; }
  [[nodiscard]] bool empty() const { return buttons_.empty(); }

  void withdraw() {
    is_withdrawn_ = true;
    for (const Button& button : std::exchange(buttons_, {})) {
      close(button.notification);
    }
    stop_alarm();
  }

  void add(std::uint32_t notification, Pressed pressed) {
    constexpr std::size_t kMost = 16;
    if (is_withdrawn_) {
      return close(notification);
    }
    remove(notification);  // a number that is given again names the newer one
    buttons_.push_back({notification, steady_clock::now() + longest_, std::move(pressed)});
    if (buttons_.size() > kMost) {
      buttons_.pop_front();
    }
    start_alarm();
  }

 private:
  struct Button {
    std::uint32_t notification = 0;  ///< by which the desktop knows it
    steady_clock::time_point end;
    Pressed pressed;
    ActivationTokens tokens{};
  };

  void close(std::uint32_t notification) {
    g_dbus_connection_call(bus_.get(), kNotificationsName, kNotificationsPath, kNotificationsName,
                           "CloseNotification", g_variant_new("(u)", notification), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, kNotificationPatience, nullptr, nullptr,
                           nullptr);
  }

  std::deque<Button>::iterator find(std::uint32_t notification) {
    return std::ranges::find(buttons_, notification, &Button::notification);
  }

  void remove(std::uint32_t notification) {
    if (const auto found = find(notification); found != buttons_.end()) {
      buttons_.erase(found);
    }
  }

  void start_alarm() {
    stop_alarm();
    if (!buttons_.empty()) {
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(buttons_.front().end - steady_clock::now());
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
    while (!self.buttons_.empty() && self.buttons_.front().end <= steady_clock::now()) {
      self.buttons_.pop_front();
    }
    self.alarm_ = 0;
    self.start_alarm();
    return G_SOURCE_REMOVE;
  }

  /// Another program counts its notifications anew.
  static void owner_changed(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                            const char* /*interface*/, const char* /*member*/,
                            GVariant* /*parameters*/, gpointer data) {
    static_cast<Shown*>(data)->buttons_.clear();
  }

  static void bus_closed(Shown* self) { self->buttons_.clear(); }

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
    const auto button = find(notification);
    if (button == buttons_.end()) {
      return;  // another's
    }
    if (signal == "ActivationToken" && strnlen(text, kLongestToken + 1) <= kLongestToken) {
      button->tokens.activation = text;
    } else if (signal == "ActionInvoked" && std::string_view(text) == kAction) {
      const Button pressed = std::move(*button);
      buttons_.erase(button);
      pressed.pressed(pressed.tokens);
    } else if (signal == "NotificationClosed") {
      buttons_.erase(button);
    }
  }

  ObjectHandle<GDBusConnection> bus_;
  std::string label_;
  std::chrono::milliseconds longest_;
  std::deque<Button> buttons_;
  guint signals_ = 0, owners_ = 0, alarm_ = 0;
  gulong closed_ = 0;
  bool is_withdrawn_ = false;
};

/// A notification that is being sent. It ends itself when it is answered.
class NotificationButtons::Sending {
 public:
  Sending(std::shared_ptr<Shown> shown, std::string entry, std::string summary, std::string body,
          std::function<void()> answered, Pressed pressed)
      : shown_(std::move(shown)),
        entry_(std::move(entry)),
        summary_(std::move(summary)),
        body_(std::move(body)),
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
    self->has_button_ = std::ranges::find(capabilities, "actions") != capabilities.end();
    const NotificationButton button{kAction, self->has_button_ ? self->shown_->label() : ""};
    self->call("Notify", notify_arguments(self->entry_, self->summary_, self->body_, button),
               notified);
  }

  static void notified(GObject* bus, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Sending> self(static_cast<Sending*>(data));
    const VariantHandle reply = reply_to(bus, result, "(u)");
    if (reply && self->has_button_) {
      std::uint32_t notification = 0;
      g_variant_get(reply.get(), "(u)", &notification);
      self->shown_->add(notification, std::move(self->pressed_));
    }
    self->answered_();
  }

  std::shared_ptr<Shown> shown_;
  std::string entry_, summary_, body_;
  std::function<void()> answered_;
  Pressed pressed_;
  bool has_button_ = false;
};

NotificationButtons::NotificationButtons(GDBusConnection* bus, std::string label,
                                         std::chrono::milliseconds longest)
    : shown_(std::make_shared<Shown>(bus, std::move(label), longest)) {}

NotificationButtons::~NotificationButtons() = default;

void NotificationButtons::send(const std::string& entry, const std::string& summary,
                               const std::string& body, std::function<void()> answered,
                               Pressed pressed) {
  auto sending = std::make_unique<Sending>(shown_, entry, summary, body, std::move(answered),
                                           std::move(pressed));
  sending.release()->begin();
}

void NotificationButtons::withdraw() {
  shown_->withdraw();
}

bool NotificationButtons::empty() const {
  return shown_->empty();
}

}  // namespace quoll::gio
