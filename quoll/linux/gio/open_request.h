#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quoll::gio {

/// A request to open URLs with one application.
struct OpenRequest {
  std::string application;  ///< its identifier
  bool background = false;  ///< the application stays behind other windows
  std::vector<std::string> urls;

  /// Convert the request to a list of byte strings and back; none when the list is not a request.
  [[nodiscard]] std::vector<std::string> fields() const;
  [[nodiscard]] static std::optional<OpenRequest> from_fields(std::vector<std::string> fields);
};

/// Why a request failed, in words for people; none when the application has taken the URLs.
using FailureReason = std::optional<std::string>;

/// What came of a request.
struct OpenResult {
  FailureReason failure = std::nullopt;
  /// What the application said of what it took, or why it refused, as it said it, cut short; empty
  /// when nothing.
  std::string report = {};
  /// What can be done about the failure; empty when that is not known.
  std::string advice = {};
};

/// What can be done about what is too long.
inline constexpr const char* kShorten = "share a long text as a file";

/// Why a request cannot be opened in any way: it has no URL; a URL is empty, not UTF-8 or holds a
/// zero byte, which the bus or a command line would silently change; or it is too long for a bus
/// message. None when it can be tried.
[[nodiscard]] std::optional<OpenResult> refusal(const OpenRequest& request);

}  // namespace quoll::gio
