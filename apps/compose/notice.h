#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/compose/received_draft.h"

namespace quoll::compose {

/// What a person is told who sees no terminal: one line, and lines of plain text below it.
struct Notice {
  std::string summary;
  std::string body;
};

/// What there is to say of a draft: what is not in it, that no mail client has it, what else a
/// person should know. None when all is as it should be.
[[nodiscard]] std::optional<Notice> notice_of(const FinishedDraft& draft);

/// What there is to say of a command that was refused.
[[nodiscard]] Notice refusal_notice(const std::string& reason);

/// Notices on their way to the thread that shows them. Any thread may call.
class Notices {
 public:
  /// `added` is called on the thread that adds one, after that.
  explicit Notices(std::function<void()> added) : added_(std::move(added)) {}

  void add(Notice notice);
  [[nodiscard]] bool empty() const;
  /// Takes them all and shows them on the desktop, of many at once the first few and how many more
  /// there are. Runs the thread's default main context.
  void show();

 private:
  std::function<void()> added_;
  mutable std::mutex mutex_;
  std::vector<Notice> notices_;
};

}  // namespace quoll::compose
