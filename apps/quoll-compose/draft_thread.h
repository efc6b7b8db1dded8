#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "apps/quoll-compose/received_draft.h"

namespace quoll::receiver {

/// Finishes received drafts one after the other on a thread of its own, so that large ones keep
/// nobody waiting. One that fails is logged. It ends with the last of them.
class DraftThread {
 public:
  DraftThread() : thread_([this] { run(); }) {}
  DraftThread(const DraftThread&) = delete;
  DraftThread& operator=(const DraftThread&) = delete;
  ~DraftThread();

  void finish_later(std::unique_ptr<ReceivedDraft> draft, gio::ActivationTokens tokens);
  /// True when a draft is not finished.
  [[nodiscard]] bool busy() const;

 private:
  struct Job {
    std::unique_ptr<ReceivedDraft> draft;
    gio::ActivationTokens tokens;
  };

  void run();

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> waiting_;
  bool working_ = false;
  bool ending_ = false;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace quoll::receiver
