#include "apps/compose/notifications.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <utility>

#include "apps/compose/folders.h"
#include "apps/compose/hand_over.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/notification.h"
#include "quoll/linux/gio/session_bus.h"
#include "quoll/platform/log.h"

namespace quoll::compose {

namespace {

using State = Outcome::State;

/// For so long the button of a notification can be pressed.
constexpr std::chrono::minutes kLongest{5};

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

/// Runs `quoll-compose --open` for the draft, with the tokens. It tells by itself what it cannot
/// do.
void start_opening(const std::string& draft, const gio::ActivationTokens& tokens) {
  const std::string words[] = {"/proc/self/exe", "--open", draft};
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
    body.add(foundation::printable(outcome.path));
  }
  for (const auto& note : outcome.notes) {
    body.add(note.text + ".");
  }
  if (body.text().empty()) {
    return std::nullopt;
  }
  const bool can_open = outcome.state == State::kKept && has_desktop();
  return Notification{.summary = summary_of(outcome),
                      .body = body.text(),
                      .draft = can_open ? std::filesystem::path(outcome.path).stem().string() : ""};
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

void send(GDBusConnection* bus, const Notification& notification, std::function<void()> answered,
          std::function<void()> ended) {
  gio::send_notification(
      bus, kNotifyingEntry, notification.summary, notification.body, std::move(answered),
      {.label = notification.draft.empty() ? "" : "Open",
       .longest = kLongest,
       .chosen = [draft = notification.draft](const auto& tokens) { start_opening(draft, tokens); },
       .ended = std::move(ended)});
}

void show_and_wait(const std::vector<Notification>& notifications) {
  using std::chrono::steady_clock;
  constexpr std::chrono::seconds kTimeOut{5};
  gio::SessionBus session;
  GDBusConnection* const bus =
      notifications.empty() ? nullptr : session.connection(steady_clock::now() + kTimeOut);
  std::size_t sent = 0;
  std::size_t answered = 0;
  std::size_t ended = 0;
  for (const Notification& notification : notifications) {
    if (bus == nullptr || answered != sent) {
      break;
    }
    ++sent;
    send(
        bus, notification, [&] { ++answered; }, [&] { ++ended; });
    gio::run_main_context_until(steady_clock::now() + kTimeOut, [&] { return answered == sent; });
  }
  gio::run_main_context_until(steady_clock::now() + kLongest + 2 * kTimeOut,
                              [&] { return ended == sent; });
}

}  // namespace quoll::compose
