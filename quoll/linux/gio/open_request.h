#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quoll::gio {

/// URLs for one application.
struct OpenRequest {
  std::string application;  ///< its identifier
  bool background = false;  ///< it shall not come to the front
  std::vector<std::string> urls;

  /// As a list of byte strings, and back; none when the list is none of ours.
  [[nodiscard]] std::vector<std::string> fields() const;
  [[nodiscard]] static std::optional<OpenRequest> from_fields(std::vector<std::string> fields);
};

/// Why a request was not carried out, for people; none when the application has taken the URLs.
using Failure = std::optional<std::string>;

/// What keeps a request from any way of opening: a URL that is not UTF-8 or holds a zero byte
/// (buses and command lines would change it silently), more bytes than a bus message may carry,
/// nothing.
[[nodiscard]] Failure refusal(const OpenRequest& request);

}  // namespace quoll::gio
