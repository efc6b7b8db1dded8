#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/notification.h"

namespace quoll::gio {

/// The notifications of a program with buttons of which one can be pressed. It can be until one
/// was, the notification was closed, its time is over, the desktop's program for notifications has
/// ended, or sixteen newer ones have one. Belongs to a thread that runs the default main context.
class NotificationButtons {
 public:
  /// Told the action of the button that was pressed; the desktop may have given a token for the
  /// window to come. It must not raise.
  using Pressed = std::function<void(const std::string& action, const ActivationTokens& tokens)>;

  /// Each button can be pressed for so long.
  NotificationButtons(GDBusConnection* bus, std::chrono::milliseconds longest);
  NotificationButtons(const NotificationButtons&) = delete;
  NotificationButtons& operator=(const NotificationButtons&) = delete;
  ~NotificationButtons();

  /// Sends a notification, with these buttons where the desktop has buttons. `answered` is called
  /// as `send_notification` does.
  void send(const std::string& entry, const std::string& summary, const std::string& body,
            std::vector<NotificationButton> buttons, std::function<void()> answered,
            Pressed pressed);

  /// Closes the notifications whose buttons can be pressed, and those that are being sent as soon
  /// as they are shown. `pressed` is called no more.
  void withdraw();

  /// True when none can be pressed. A notification that is not answered yet has none.
  [[nodiscard]] bool empty() const;

 private:
  class Shown;
  class Sending;
  std::shared_ptr<Shown> shown_;
};

}  // namespace quoll::gio
