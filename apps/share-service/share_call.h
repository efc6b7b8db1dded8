#pragma once

#include <gio/gio.h>
#include <gio/gunixfdlist.h>

#include <cstddef>
#include <optional>
#include <string>

#include "apps/share/request/share_request.h"
#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::share_service {

/// What a call on the session bus asks for.
struct ShareCall {
  share::ShareRequest request;
  gio::ActivationTokens tokens;
  /// What the clipboard holds is shared; nothing else then.
  bool clipboard = false;
};

/// More than anybody selects, and few enough for one process.
inline constexpr std::size_t kMostUris = 20'000;

/// The error for a call with so many links and files; none when they are not too many.
[[nodiscard]] std::optional<std::string> too_many_uris(std::size_t count);

/// Reads the parameters that docs/dbus.md describes into `call`. `descriptors` came with the
/// message; null when none did. Answers what is wrong; none when all is well.
[[nodiscard]] std::optional<std::string> read_share_call(GVariant* parameters,
                                                         GUnixFDList* descriptors, ShareCall& call);

}  // namespace quoll::share_service
