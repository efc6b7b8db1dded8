#pragma once

#include <chrono>

#include "apps/share-service/share_process.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::share_service {

/// Answers on the session bus to programs that share (docs/dbus.md), each share in a process of its
/// own, until nothing came for `idle`. Answers why when it cannot.
[[nodiscard]] gio::Failure serve_shares(std::chrono::milliseconds idle, const ShareBounds& bounds);

}  // namespace quoll::share_service
