#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "apps/quoll-compose/notice.h"
#include "apps/quoll-compose/received_draft.h"

namespace quoll::receiver {

/// Finishes received drafts one after the other on a thread of its own, so that large ones keep
/// nobody waiting. One that fails is logged. It ends with the last of them.
class DraftThread {
 public:
  /// `noticed` is called on that thread when there is a notice to take.
  explicit DraftThread(std::function<void()> noticed)
      : noticed_(std::move(noticed)), thread_([this] { run(); }) {}
  DraftThread(const DraftThread&) = delete;
  DraftThread& operator=(const DraftThread&) = delete;
  ~DraftThread();

  void finish_later(std::unique_ptr<ReceivedDraft> draft, gio::ActivationTokens tokens);
  /// True when a draft is not finished.
  [[nodiscard]] bool busy() const;
  /// True when there are notices that nobody has taken.
  [[nodiscard]] bool has_notices() const;
  /// What people are to be told of the drafts finished since the last call. Those of a draft are
  /// there before the thread is idle.
  [[nodiscard]] std::vector<Notice> take_notices();

 private:
  struct Job {
    std::unique_ptr<ReceivedDraft> draft;
    gio::ActivationTokens tokens;
  };

  void run();
  void tell(const std::optional<Notice>& notice);

  std::function<void()> noticed_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> waiting_;
  std::vector<Notice> notices_;
  bool working_ = false;
  bool ending_ = false;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace quoll::receiver
