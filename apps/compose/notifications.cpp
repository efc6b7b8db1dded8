#include "apps/compose/notifications.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

#include "apps/compose/folders.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/notification.h"

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
  return body.text().empty() ? std::nullopt
                             : std::optional(Notification{summary_of(outcome), body.text()});
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

void show_and_wait(const std::vector<Notification>& notifications) {
  constexpr std::chrono::milliseconds kTimeOut{5000};
  static_cast<void>(std::ranges::all_of(notifications, [&](const Notification& notification) {
    return gio::show_notification(kNotifyingEntry, notification.summary, notification.body,
                                  kTimeOut);
  }));
}

}  // namespace quoll::compose
