#pragma once

#include <sys/resource.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "apps/share-service/share_call.h"
#include "quoll/foundation/polymorphic.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::share_service {

/// How many bytes of a share's report are kept. A report has a line for each thing that was left
/// out.
inline constexpr std::size_t kMostTold = std::size_t{64} << 10;

/// What came of a share: its exit code, and what it wrote on standard error. That is at most a
/// block longer than `kMostTold`, and may be any bytes.
struct ShareEnd {
  int code = 1;
  std::string told;
  bool is_cancelled = false;
};

/// What a share may use.
struct ShareBounds {
  std::chrono::seconds time{600};  ///< a share without progress for so long is ended
  rlim_t descriptors = 1024;  ///< open files; the programs that it starts expect the usual limit
};

/// A share that runs. Belongs to a thread that runs the default main context.
class RunningShare : public foundation::Polymorphic {
 public:
  /// Ends it, unless it has had its turn to open a draft.
  virtual void cancel() = 0;
  /// Shows a notification with a button that cancels it, when it takes long.
  virtual void offer_cancelling(GDBusConnection* bus) = 0;
};

/// Starts `quoll-share` for the call and returns at once. Null when it could not be started, and
/// `failure` says why. Otherwise `ended` is called once, later, by the default main context.
[[nodiscard]] std::shared_ptr<RunningShare> start_share(ShareCall call, const ShareBounds& bounds,
                                                        std::function<void(const ShareEnd&)> ended,
                                                        gio::FailureReason& failure);

}  // namespace quoll::share_service
