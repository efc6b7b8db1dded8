#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "apps/compose/draft_fields.h"
#include "apps/compose/outcome.h"
#include "apps/compose/taken_draft.h"
#include "apps/compose/writer_server.h"
#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::compose {

/// Finishes taken drafts on a thread of its own, so that a large draft lets nobody wait. It begins
/// by sweeping the receiver's folders, and goes on with the drafts that an earlier program left, if
/// it shall.
///
/// All waiting drafts are written, one after the other, before the written ones are given to the
/// mail client, which takes longer.
///
/// A flood is more than ten drafts that are under way at once in this program, or wait when it
/// starts, or are offered to clients within ten seconds by whatever programs. Then drafts are kept
/// and not given to the client, or a web page could open any number of windows. Only a few of those
/// that wait are locked; what another program has begun meanwhile is left to it.
class DraftThread {
 public:
  /// Called on the thread.
  struct Listener {
    /// Once for each draft, when nothing more is done about it.
    std::function<void(const Outcome&)> finished;
    /// When a flood is over in which drafts were kept. Of several programs one calls this, and at
    /// most once in ten seconds.
    std::function<void()> flood_is_over;
  };

  /// What becomes of the drafts that earlier programs have left.
  enum class Earlier : bool { kAreLeft, kAreGoneOnWith };

  /// `writer` must outlive this object.
  DraftThread(WriterServer& writer, Earlier earlier, Listener listener);
  DraftThread(const DraftThread&) = delete;
  DraftThread& operator=(const DraftThread&) = delete;
  /// Waits for the last draft.
  ~DraftThread();

  void add(std::vector<TakenDraft> drafts, const gio::ActivationTokens& tokens);
  /// True while a draft is not finished.
  [[nodiscard]] bool busy() const;

 private:
  struct Job {
    std::string name;
    std::optional<TakenDraft> draft;  ///< none: it is locked when its turn comes
    gio::ActivationTokens tokens;
    DraftFields fields = {};
    bool is_earlier = false;
    bool is_written = false;  ///< then the fields are known
  };
  using Lock = std::unique_lock<std::mutex>;

  void run();
  void begin();
  void go_on_with(const std::string& name);
  /// Puts it at the end. The caller has the lock.
  void wait(Job job);
  void work_on(Job job, Lock& lock);
  [[nodiscard]] static bool lock_draft(Job& job);
  [[nodiscard]] bool is_over_after_writing(Job& job);
  void give(Job& job);
  [[nodiscard]] bool may_offer();
  void finish(const Job& job, Outcome outcome) const;
  void end_flood(Lock& lock);
  void tell_of_flood() const;

  WriterServer& writer_;
  Earlier earlier_;
  Listener listener_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> waiting_;
  std::deque<Job> written_;
  std::size_t under_way_ = 0;  ///< drafts that are not finished
  bool has_begun_ = false;     ///< what was left from earlier is known
  bool ending_ = false;
  bool is_flood_ = false;
  bool has_kept_ = false;         ///< a draft of this flood
  std::size_t kept_unknown_ = 0;  ///< drafts since it could not be known how many came
  std::thread thread_;            // last, because it uses the other members
};

}  // namespace quoll::compose
