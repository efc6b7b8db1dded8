#pragma once

#include <sys/resource.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "apps/share-service/share_call.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::share_service {

/// A share tells a line for each thing that it left out.
inline constexpr std::size_t kMostTold = std::size_t{64} << 10;

/// What came of a share: the number that `quoll-share` ends with, and what it told: a block more
/// than `kMostTold` at most, and not yet known to be text.
struct ShareEnd {
  int code = 1;
  std::string told;
};

/// What a share may use.
struct ShareBounds {
  std::chrono::seconds time{600};  ///< then it is ended
  rlim_t descriptors = 1024;       ///< as the programs that it starts expect it
};

/// Starts `quoll-share` with all of the call and answers at once. `ended` is called later, once,
/// by the default main context; not when the process could not be started, which is said.
[[nodiscard]] gio::Failure start_share(ShareCall call, const ShareBounds& bounds,
                                       std::function<void(const ShareEnd&)> ended);

}  // namespace quoll::share_service
