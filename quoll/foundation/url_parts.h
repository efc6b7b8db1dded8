#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The text of a URL taken apart. Every piece points into the text, as it stands there; an absent
/// piece is none, which is not the same as an empty one.
namespace quoll::foundation {

using UrlPiece = std::optional<std::string_view>;

/// True for a character that may stand anywhere in a URL as it is; "#" and "%" may not.
[[nodiscard]] bool is_url_character(char c);

/// The five components of RFC 3986. There is always a path.
struct UrlReference {
  UrlPiece scheme;
  UrlPiece authority;
  std::string_view path;
  UrlPiece query;
  UrlPiece fragment;
};

[[nodiscard]] UrlReference split_reference(std::string_view text);

/// Everything that `NSURL` tells. A host in brackets comes without them, an empty host and an empty
/// path are none. A scheme whose rest does not begin with "/" is the only part.
struct UrlParts {
  UrlPiece scheme, user, password, host, port, path, parameters, query, fragment;
};

[[nodiscard]] UrlParts split_parts(std::string_view text);

/// What `reference` means where `base` is the base (RFC 3986, 5.2). A base without a scheme gives a
/// result without one.
[[nodiscard]] std::string resolve_reference(std::string_view reference, std::string_view base);

}  // namespace quoll::foundation
