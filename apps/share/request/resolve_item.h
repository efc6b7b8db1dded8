#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/nsurl.h"

/// Reading what people and other programs call an item. Programs hand over strings that are no
/// valid URLs, paths where they promise URLs, and links with spaces; whatever is clear is taken.
namespace quoll::share {

/// The URL that a text stands for: a file URL of a file that can be read, or a link. Without one,
/// why not, in words that follow a colon.
struct ResolvedItem {
  std::shared_ptr<foundation::NSURL> url;
  std::string refusal;
  std::string advice{};  ///< what to do about it; empty when there is nothing to say
};

/// Reads a file URL (escaped or raw, nothing is cut at "?" or "#"), a path (absolute, or relative
/// to the working directory; any bytes) or a link. An existing path is a path, whatever it looks
/// like. Looks at the disk; keeps no file open.
[[nodiscard]] ResolvedItem resolve_item(std::string_view given);

/// The scheme of a link, in small letters and without ":"; none when the text does not begin as a
/// link does: with a scheme of two characters or more, then ":" and no white space.
[[nodiscard]] std::optional<std::string> link_scheme(std::string_view text);

/// Why a path is no file that can be shared; none when it is one.
[[nodiscard]] std::optional<std::string> why_not_shareable(const std::string& path);

}  // namespace quoll::share
