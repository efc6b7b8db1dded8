#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/compose/received_draft.h"

namespace quoll::compose {

/// A message for a user who sees no terminal: a summary line, and lines of plain text below it.
struct Notice {
  std::string summary;
  std::string body;
};

/// What the user should know about a finished draft: what was left out, that no mail client has it,
/// and the notes. None when there is nothing to say.
[[nodiscard]] std::optional<Notice> notice_of(const FinishedDraft& draft);

/// Tells that a command was refused.
[[nodiscard]] Notice refusal_notice(const std::string& reason);

/// A queue of notices for the thread that shows them. Any thread may add one.
class Notices {
 public:
  /// `added` is called after each addition, on the thread that adds.
  explicit Notices(std::function<void()> added) : added_(std::move(added)) {}

  void add(Notice notice);
  [[nodiscard]] bool empty() const;
  /// Empties the queue and shows the notices on the desktop. Of many, it shows the first few and
  /// tells how many more there are. Runs the default main context of this thread.
  void show();

 private:
  std::function<void()> added_;
  mutable std::mutex mutex_;
  std::vector<Notice> notices_;
};

}  // namespace quoll::compose
