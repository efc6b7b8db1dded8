#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace quoll::gio {

inline constexpr const char* kNotificationsName = "org.freedesktop.Notifications";
inline constexpr const char* kNotificationsPath = "/org/freedesktop/Notifications";
inline constexpr int kNotificationPatience = 5000;  ///< for an answer, in milliseconds

/// A button of a notification: the name that the desktop tells, and what a person reads.
struct NotificationButton {
  std::string action;
  std::string label;
};

/// The arguments of a call of `Notify`, as a floating reference.
[[nodiscard]] GVariant* notify_arguments(const std::string& entry, const std::string& summary,
                                         const std::string& body,
                                         const std::vector<NotificationButton>& buttons = {});

/// Shows a notification on the desktop: a summary line, and plain text below it. `entry` names the
/// desktop entry of the program that shows it, without ".desktop". Waits for the answer, but at
/// most for `time_out`. False when there is no session bus or no program that shows notifications.
/// Runs the default main context of this thread.
bool show_notification(const std::string& entry, const std::string& summary,
                       const std::string& body, std::chrono::milliseconds time_out);

/// Sends a notification without waiting for an answer, for a program that goes on running.
/// `answered` is called once, in the main context of this thread: when the notification is shown,
/// when it cannot be, and when neither is known after 5 seconds. It must not raise.
void send_notification(GDBusConnection* bus, const std::string& entry, const std::string& summary,
                       const std::string& body, std::function<void()> answered = {});

}  // namespace quoll::gio
