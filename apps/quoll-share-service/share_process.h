#pragma once

#include <functional>
#include <string>

#include "apps/quoll-share-service/share_request.h"
#include "linux/gio/open_request.h"

namespace quoll {

/// What came of a share: the number that `quoll-share` ends with, and what it told.
struct ShareEnd {
  int code = 1;
  std::string told;
};

/// Who hears of a failure.
enum class Listener {
  kPerson,  ///< it is shown on the desktop
  kCaller,  ///< it is in the answer only, which comes after ten minutes at the latest
};

/// Starts `quoll-share` with all of the request and answers at once. `ended` is called later, once,
/// by the default main context; not when the process could not be started, which is said.
[[nodiscard]] gio::Failure start_share(ShareRequest request, Listener listener,
                                       std::function<void(const ShareEnd&)> ended);

}  // namespace quoll
