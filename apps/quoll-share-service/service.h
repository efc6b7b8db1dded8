#pragma once

#include <chrono>

#include "apps/quoll-share-service/share_process.h"
#include "linux/gio/open_request.h"

namespace quoll {

/// Answers on the session bus to programs that share (docs/dbus.md), each share in a process of its
/// own, until nothing came for `idle`. Answers why when it cannot.
[[nodiscard]] gio::Failure serve_shares(std::chrono::milliseconds idle, const ShareBounds& bounds);

}  // namespace quoll
