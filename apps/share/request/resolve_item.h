#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "apps/share/request/resolved_item.h"

/// Reading what people and other programs call an item. Programs hand over strings that are no
/// valid URLs, paths where they promise URLs, and links with spaces; whatever is clear is taken.
namespace quoll::share {

/// Answers where the file of a URL of another computer or device is mounted, as an absolute path;
/// none when it is not.
using Mounts = std::function<std::optional<std::string>(const std::string& url)>;

/// Reads a file URL (escaped or raw, nothing is cut at "?" or "#"), a path (absolute, or relative
/// to the working directory; any bytes) or a link. An existing path is a path, whatever it looks
/// like. Of a remote file it is the path at which it is mounted; a null `mounts` knows none. Looks
/// at the disk; keeps no file open.
[[nodiscard]] ResolvedItem resolve_item(std::string_view given, const Mounts& mounts = nullptr);

/// Why a path is no file that can be shared; none when it is one.
[[nodiscard]] std::optional<std::string> why_not_shareable(const std::string& path);

}  // namespace quoll::share
