#pragma once

#include <sys/resource.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "apps/share-service/share_call.h"
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
};

/// What a share may use.
struct ShareBounds {
  std::chrono::seconds time{600};  ///< a share that takes longer is ended
  rlim_t descriptors = 1024;  ///< open files; the programs that it starts expect the usual limit
};

/// Starts `quoll-share` for the call and returns at once. Answers why when it could not be started.
/// Otherwise `ended` is called once, later, by the default main context.
[[nodiscard]] gio::Failure start_share(ShareCall call, const ShareBounds& bounds,
                                       std::function<void(const ShareEnd&)> ended);

}  // namespace quoll::share_service
