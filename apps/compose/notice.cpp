#include "apps/compose/notice.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/notification.h"

namespace quoll::compose {

std::optional<Notice> notice_of(const FinishedDraft& draft) {
  constexpr std::size_t kMostFiles = 5;
  constexpr std::size_t kLongestName = 120;
  const HandedOver& handed = draft.handed_over;
  const bool is_kept = !handed.is_given && !handed.sentence.empty();
  std::string body;
  const auto add = [&](const std::string& line) { body += (body.empty() ? "" : "\n") + line; };
  const auto& left_out = draft.left_out;
  for (std::size_t at = 0; at < left_out.size() && at < kMostFiles; ++at) {
    add("Left out: " + foundation::printable(left_out[at].name, kLongestName) + ": " +
        left_out[at].reason);
  }
  if (left_out.size() > kMostFiles) {
    add("Left out: " + std::to_string(left_out.size() - kMostFiles) + " more");
  }
  if (is_kept) {
    add(handed.reason + ".");
    add(foundation::printable(draft.path));
  }
  for (const auto& note : draft.notes) {
    add(note);
  }
  if (body.empty()) {
    return std::nullopt;
  }
  const char* const otherwise = is_kept ? "The draft is kept" : "A draft was made";
  return Notice{.summary = left_out.empty() ? otherwise : "Not everything is in the draft",
                .body = body};
}

Notice refusal_notice(const std::string& reason) {
  return {.summary = "There is no draft", .body = foundation::printable(reason)};
}

void Notices::add(Notice notice) {
  {
    const std::lock_guard lock(mutex_);
    notices_.push_back(std::move(notice));
  }
  added_();
}

bool Notices::empty() const {
  const std::lock_guard lock(mutex_);
  return notices_.empty();
}

void Notices::show() {
  constexpr std::size_t kMost = 3;
  constexpr std::chrono::milliseconds kTimeOut{5000};
  std::vector<Notice> notices;
  {
    const std::lock_guard lock(mutex_);
    notices.swap(notices_);
  }
  if (notices.size() > kMost) {
    const std::string more = std::to_string(notices.size() - kMost);
    notices.resize(kMost);
    notices.push_back({.summary = more + " more drafts were not as they should be",
                       .body = "The system log tells of each; quoll-compose --list names them."});
  }
  // Stop at the first one that is not shown: waiting for the others would take too long.
  static_cast<void>(std::ranges::all_of(notices, [&](const Notice& notice) {
    return gio::show_notification(notice.summary, notice.body, kTimeOut);
  }));
}

}  // namespace quoll::compose
