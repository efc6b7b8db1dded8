#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/compose/outcome.h"
#include "quoll/linux/gio/notification_buttons.h"

namespace quoll::compose {

/// A message for a user who sees no terminal: a summary line, and lines of plain text below it.
struct Notification {
  std::string summary;
  std::string body;
  std::string draft{};  ///< what its buttons are about, by its name; empty for no buttons
  /// The action of each is the option with which this program is started for the draft.
  std::vector<gio::NotificationButton> buttons{};
};

/// What the user should know about a draft: what was left out, that no mail client has it, that it
/// could not be written, and the notes. None when there is nothing to say.
[[nodiscard]] std::optional<Notification> notification_of(const Outcome& outcome);

/// Tells that the button of a notification has opened nothing.
[[nodiscard]] Notification notification_of_unopened(const std::string& reason);

/// Tells that a command was refused.
[[nodiscard]] Notification notification_of_refusal(const std::string& reason);

/// Tells, for all of them and all programs, that many drafts were kept.
[[nodiscard]] Notification notification_of_flood();

/// Notifications that wait for the thread that shows them. Any thread may add one.
class NotificationQueue {
 public:
  /// `added` is called after each addition, on the thread that adds.
  explicit NotificationQueue(std::function<void()> added) : added_(std::move(added)) {}

  void add(Notification notification);
  /// Adds what the user should know about a draft. That drafts wait is said once, for all.
  void add(const Outcome& outcome);
  [[nodiscard]] bool empty() const;
  /// Empties the queue. Of many, these are the first few, and one that tells how many more there
  /// are.
  [[nodiscard]] std::vector<Notification> take();

 private:
  std::function<void()> added_;
  mutable std::mutex mutex_;
  std::vector<Notification> waiting_;
  bool told_of_waiting_ = false;
};

/// The receiver's desktop entry, in whose name they are shown.
inline constexpr const char* kNotifyingEntry = "it.vorlent.quoll2";

/// For so long the buttons of a notification can be pressed.
inline constexpr std::chrono::minutes kButtonTime{5};

/// Sends one without waiting, with its buttons when its draft is there. `answered` is called as
/// `gio::send_notification` does. A button starts this program anew, so nothing is held up by a
/// client.
void send(gio::NotificationButtons& buttons, GDBusConnection* bus, const Notification& notification,
          std::function<void()> answered);

/// Shows these on the desktop, without buttons, and waits until they are shown: up to 5 seconds for
/// each, and not for others once one is not shown. Runs the default main context of this thread.
void show_and_wait(const std::vector<Notification>& notifications);

}  // namespace quoll::compose
