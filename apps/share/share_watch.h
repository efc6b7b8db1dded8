#pragma once

#include <functional>
#include <memory>
#include <string>

#include "quoll/linux/gio/notification_buttons.h"
#include "quoll/linux/gio/source.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// The reader of a share's progress (`progress_pipe.h`). It belongs to a thread that runs the
/// default main context.
class ShareWatch {
 public:
  /// `moved_on` is called whenever something has; it may be null.
  explicit ShareWatch(posix::UniqueFd pipe, std::function<void()> moved_on = nullptr);
  ShareWatch(const ShareWatch&) = delete;
  ShareWatch& operator=(const ShareWatch&) = delete;
  ~ShareWatch();

  /// When it is not the share's turn after 2 s, shows a notification with a button that cancels it.
  /// That goes when the turn comes, and with this object. `bus` is asked for then; it may answer
  /// null.
  void offer_cancelling(const std::function<GDBusConnection*()>& bus);

  /// Ends the share, unless it has had its turn.
  void cancel();
  [[nodiscard]] bool is_cancelled() const { return is_cancelled_; }

 private:
  bool read();
  void show(GDBusConnection* bus);
  void withdraw();

  posix::UniqueFd pipe_;
  std::function<void()> moved_on_;
  std::unique_ptr<gio::NotificationButtons> buttons_;
  std::string line_;  ///< the beginning of one
  gio::Source reading_, alarm_;
  bool has_turn_ = false, is_cancelled_ = false;
};

}  // namespace quoll::share
