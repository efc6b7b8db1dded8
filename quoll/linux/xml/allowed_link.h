#pragma once

#include <string>
#include <string_view>

namespace quoll::xml {

/// The link in a `href` attribute, without white space around it and without control characters;
/// empty when its scheme is not `http`, `https`, `mailto`, `ftp` or `tel`, when it has none, and
/// when it is longer than the limit. A browser drops line feeds and tabs inside a link, so
/// `java&#10;script:` is seen as what it is.
[[nodiscard]] std::string allowed_link(std::string_view href);

/// The source of a picture that is part of the same message (`cid:`); empty for any other.
[[nodiscard]] std::string allowed_source(std::string_view source);

}  // namespace quoll::xml
