#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <string>

#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::gio {

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

/// What a person can do about a notification, by a button in it. Both functions are called in the
/// main context and must not raise.
struct NotificationAction {
  std::string label;                  ///< empty for no button
  std::chrono::milliseconds longest;  ///< for so long it can be chosen
  /// The person chose it. The desktop may have given a token for the window that it opens.
  std::function<void(const ActivationTokens& tokens)> chosen;
  /// Called once, after `answered`, when it cannot be chosen any more: it was, the notification was
  /// closed or not shown, the desktop has no such buttons, or the time is over.
  std::function<void()> ended;
};

/// The same with a button, where the desktop has buttons. The program must go on running until
/// `ended`.
void send_notification(GDBusConnection* bus, const std::string& entry, const std::string& summary,
                       const std::string& body, std::function<void()> answered,
                       NotificationAction action);

}  // namespace quoll::gio
