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

/// Finishes received drafts on a thread of its own, so that a large draft lets nobody wait. It
/// writes the waiting drafts one after the other. When none is waiting, it gives the written ones
/// to the mail client, which takes longer. What the user should know about a draft becomes a
/// notice; a failure is logged too. The destructor waits for the last draft.
class DraftThread {
 public:
  /// `notices` must outlive this object. The notices of a draft are added before `busy` becomes
  /// false.
  explicit DraftThread(Notices& notices) : notices_(notices), thread_([this] { run(); }) {}
  DraftThread(const DraftThread&) = delete;
  DraftThread& operator=(const DraftThread&) = delete;
  ~DraftThread();

  void finish_later(std::unique_ptr<ReceivedDraft> draft, gio::ActivationTokens tokens);
  /// True while a draft is not finished.
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
  std::thread thread_;  // last, because it uses the other members
};

}  // namespace quoll::compose
