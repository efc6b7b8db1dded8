#pragma once

#include <sys/resource.h>

#include <chrono>
#include <functional>
#include <string>

#include "apps/share-service/share_call.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::share_service {

/// What came of a share: the number that `quoll-share` ends with, and what it told.
struct ShareEnd {
  int code = 1;
  std::string told;
};

/// Who hears of a failure.
enum class Listener {
  kPerson,  ///< the share shows it on the desktop; told is only what it could not
  kCaller,  ///< it is told
};

/// What a share may use.
struct ShareBounds {
  std::chrono::seconds time{600};  ///< then it is ended
  rlim_t descriptors = 1024;       ///< as the programs that it starts expect it
};

/// Starts `quoll-share` with all of the call and answers at once. `ended` is called later, once,
/// by the default main context; not when the process could not be started, which is said.
[[nodiscard]] gio::Failure start_share(ShareCall call, Listener listener, const ShareBounds& bounds,
                                       std::function<void(const ShareEnd&)> ended);

}  // namespace quoll::share_service
