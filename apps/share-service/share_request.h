#pragma once

#include <gio/gio.h>
#include <gio/gunixfdlist.h>

#include <optional>
#include <string>
#include <vector>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share_service {

/// An item that came without a file of its own.
struct RequestedItem {
  posix::UniqueFd descriptor;
  std::string media_type;
  std::string name;
};

/// What a program wants to share.
struct ShareRequest {
  std::optional<std::string> title;
  std::optional<std::string> text;
  std::optional<std::string> html;
  std::vector<std::string> uris;
  std::vector<RequestedItem> items;
  gio::ActivationTokens tokens;
  /// What the clipboard holds is shared; nothing else then.
  bool clipboard = false;

  /// A title alone is no share.
  [[nodiscard]] bool empty() const { return !text && !html && uris.empty() && items.empty(); }
};

/// More than anybody selects, and few enough for one process.
inline constexpr std::size_t kMostUris = 20'000;

/// What is said of so many links and files when they are too many; none when they are not.
[[nodiscard]] std::optional<std::string> too_many_uris(std::size_t count);

/// Reads what docs/dbus.md describes into `request`, with the descriptors that came beside it (null
/// when none did). Answers what is wrong with it; none when all is well.
[[nodiscard]] std::optional<std::string> read_share_request(GVariant* given,
                                                            GUnixFDList* descriptors,
                                                            ShareRequest& request);

}  // namespace quoll::share_service
