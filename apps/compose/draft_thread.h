#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "apps/compose/notice.h"
#include "apps/compose/received_draft.h"

namespace quoll::compose {

/// Finishes received drafts on a thread of its own, so that large ones keep nobody waiting: writes
/// those that wait, one after the other, and gives them to the mail client when none waits, since a
/// client takes its time. What there is to say of one becomes a notice; one that fails is logged
/// too. It ends with the last of them.
class DraftThread {
 public:
  /// The notices of a draft are there before the thread is idle.
  explicit DraftThread(Notices& notices) : notices_(notices), thread_([this] { run(); }) {}
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

  struct Offer {
    WrittenDraft draft;
    gio::ActivationTokens tokens;
  };

  void run();
  [[nodiscard]] std::optional<Offer> written(Job job);
  void hand(Offer offer);

  Notices& notices_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> waiting_;
  std::deque<Offer> written_;
  bool working_ = false;
  bool ending_ = false;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace quoll::compose
