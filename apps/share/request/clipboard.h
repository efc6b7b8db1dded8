#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "apps/share/request/share_request.h"

namespace quoll::share {

/// How long the program that holds the clipboard may take.
struct ClipboardTime {
  std::chrono::milliseconds read_timeout{5'000};  ///< how long it may deliver nothing
  std::chrono::milliseconds in_all{30'000};
};

/// Why there is nothing.
struct ClipboardTrouble {
  std::string why;  ///< in words that follow a colon
  /// The reason for the system log, when `why` holds the words of the program that reads the
  /// clipboard.
  std::string logged_as{};
};

/// Adds what the clipboard holds to the request, the first that is there of: files and links, a
/// picture, styled text, plain text. Answers why there is nothing;
/// none when there is something. To be called while there is one thread.
[[nodiscard]] std::optional<ClipboardTrouble> add_clipboard(ShareRequest& request,
                                                            const ClipboardTime& time = {});

}  // namespace quoll::share
