#pragma once

#include <chrono>

#include "apps/share-service/share_process.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::share_service {

/// Serves programs that share over the session bus (docs/dbus.md), each share in a process of its
/// own. Returns when no call has come for `idle`. Answers why when it cannot serve.
[[nodiscard]] gio::Failure serve_shares(std::chrono::milliseconds idle, const ShareBounds& bounds);

}  // namespace quoll::share_service
