#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quoll::share {

/// What a `data:` URL (RFC 2397) holds.
struct DataUrl {
  std::string media_type;  ///< in small letters, without parameters; "text/plain" when not given
  std::string bytes;
};

/// Reads a `data:` URL. A "#" cuts nothing: those who make such URLs by hand forget to escape it.
/// White space and missing padding in Base64 are forgiven, and so is its alphabet for URLs. None
/// when there is no comma, an escape is broken or a character is not Base64.
[[nodiscard]] std::optional<DataUrl> read_data_url(std::string_view url);

}  // namespace quoll::share
