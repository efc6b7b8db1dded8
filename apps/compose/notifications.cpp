#include "apps/compose/notifications.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <utility>

#include "apps/compose/folders.h"
#include "apps/compose/hand_over.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/notification.h"
#include "quoll/platform/log.h"

namespace quoll::compose {

namespace {

using State = Outcome::State;

const char* summary_of(const Outcome& outcome) {
  switch (outcome.state) {
    case State::kWaits:
    case State::kStopped:
      return "A draft waits";
    case State::kSetAside:
      return "A draft cannot be written";
    case State::kGiven:
    case State::kKept:
      break;
  }
  if (!outcome.left_out.empty()) {
    return "Not everything is in the draft";
  }
  return outcome.reason.empty() ? "A draft was made" : "The draft is kept";
}

class Lines {
 public:
  void add(const std::string& line) { text_ += (text_.empty() ? "" : "\n") + line; }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

/// Runs `quoll-compose --ACTION DRAFT`, with the tokens. It tells by itself what it cannot do.
void start_action(const std::string& action, const std::string& draft,
                  const gio::ActivationTokens& tokens) {
  const std::string words[] = {"/proc/self/exe", "--" + action, draft};
  std::array<char*, std::size(words) + 1> arguments{};
  std::ranges::transform(words, arguments.begin(),
                         [](const std::string& word) { return const_cast<char*>(word.c_str()); });
  char** environment = g_get_environ();
  environment =
      g_environ_setenv(environment, "XDG_ACTIVATION_TOKEN", tokens.activation.c_str(), TRUE);
  gio::ErrorSlot error;
  if (g_spawn_async(
          nullptr, arguments.data(), environment,
          static_cast<GSpawnFlags>(G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL),
          nullptr, nullptr, nullptr, error.out()) == FALSE) {
    platform::log("the draft %@ cannot be opened: %@", draft, error.message());
  }
  g_strfreev(environment);
}

/// Does this with the draft that the notification was about.
void act_when_pressed(const std::string& action, const std::string& draft,
                      const gio::ActivationTokens& tokens, const struct stat& shown) {
  struct stat present {};
  if (stat(message_file(draft).c_str(), &present) != 0 || present.st_dev != shown.st_dev ||
      present.st_ino != shown.st_ino) {
    return;  // deleted; another may have its name by now
  }
  start_action(action, draft, tokens);
}

void add_left_out(Lines& body, const LeftOutFiles& files) {
  constexpr std::size_t kMostFiles = 5;
  constexpr std::size_t kLongestName = 120;
  const std::size_t shown = std::min(files.named.size(), kMostFiles);
  for (std::size_t at = 0; at < shown; ++at) {
    body.add("Left out: " + foundation::printable(files.named[at].name, kLongestName) + ": " +
             files.named[at].reason);
  }
  if (files.count() > shown) {
    body.add("Left out: " + std::to_string(files.count() - shown) + " more");
  }
}

std::vector<gio::NotificationButton> buttons_for(const Outcome& outcome) {
  if (outcome.to_attach.empty()) {
    return {{.action = "open", .label = "Open"}};
  }
  return {{.action = "files", .label = "Show the files"},
          {.action = "ask", .label = "Choose a mail program"}};
}

}  // namespace

std::optional<Notification> notification_of(const Outcome& outcome) {
  Lines body;
  if (outcome.in_flood || outcome.state == State::kStopped) {
    return std::nullopt;  // one tells of all; the next start goes on with it
  }
  add_left_out(body, outcome.left_out);
  if (!outcome.reason.empty()) {
    body.add(outcome.reason + ".");
    if (outcome.state == State::kWaits) {
      body.add("It is written at the next start.");
    } else if (outcome.state == State::kSetAside) {
      body.add("What was shared stays for 30 days.");
    }
    body.add(foundation::printable(outcome.to_attach.empty() ? outcome.path : outcome.to_attach));
  }
  for (const auto& note : outcome.notes) {
    body.add(note.text + ".");
  }
  if (body.text().empty()) {
    return std::nullopt;
  }
  Notification notification{.summary = summary_of(outcome), .body = body.text()};
  if (outcome.state == State::kKept && has_desktop()) {
    notification.draft = std::filesystem::path(outcome.path).stem();
    notification.buttons = buttons_for(outcome);
  }
  return notification;
}

Notification notification_of_unopened(const std::string& reason) {
  return {.summary = "The draft was not opened", .body = foundation::printable(reason) + "."};
}

Notification notification_of_refusal(const std::string& reason) {
  constexpr std::size_t kLongestReason = 400;
  return {.summary = "There is no draft", .body = foundation::printable(reason, kLongestReason)};
}

Notification notification_of_flood() {
  return {.summary = "Many drafts are kept",
          .body = "So many came at once that no mail client was started for them. They lie in " +
                  foundation::printable(drafts_folder()) + "."};
}

void NotificationQueue::add(Notification notification) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(notification));
  }
  added_();
}

void NotificationQueue::add(const Outcome& outcome) {
  auto notification = notification_of(outcome);
  if (!notification) {
    return;
  }
  if (outcome.state == State::kWaits) {
    const std::lock_guard lock(mutex_);
    if (std::exchange(told_of_waiting_, true)) {
      return;
    }
  }
  add(std::move(*notification));
}

bool NotificationQueue::empty() const {
  const std::lock_guard lock(mutex_);
  return waiting_.empty();
}

std::vector<Notification> NotificationQueue::take() {
  constexpr std::size_t kMost = 3;
  std::vector<Notification> shown;
  {
    const std::lock_guard lock(mutex_);
    shown.swap(waiting_);
  }
  if (shown.size() > kMost) {
    const std::string more = std::to_string(shown.size() - kMost);
    shown.resize(kMost);
    shown.push_back({.summary = more + " more drafts were not as they should be",
                     .body = "What was taken of them is kept."});
  }
  return shown;
}

void send(gio::NotificationButtons& buttons, GDBusConnection* bus, const Notification& notification,
          std::function<void()> answered) {
  struct stat shown {};
  if (notification.draft.empty() || stat(message_file(notification.draft).c_str(), &shown) != 0) {
    gio::send_notification(bus, kNotifyingEntry, notification.summary, notification.body,
                           std::move(answered));
    return;
  }
  buttons.send(kNotifyingEntry, notification.summary, notification.body, notification.buttons,
               std::move(answered),
               [draft = notification.draft, shown](const std::string& action,
                                                   const gio::ActivationTokens& tokens) {
                 act_when_pressed(action, draft, tokens, shown);
               });
}

void show_and_wait(const std::vector<Notification>& notifications) {
  constexpr std::chrono::milliseconds kTimeOut{5000};
  static_cast<void>(std::ranges::all_of(notifications, [&](const Notification& notification) {
    return gio::show_notification(kNotifyingEntry, notification.summary, notification.body,
                                  kTimeOut);
  }));
}

}  // namespace quoll::compose
