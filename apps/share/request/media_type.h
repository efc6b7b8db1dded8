#pragma once

#include <string>
#include <string_view>

namespace quoll::share {

/// The usual ending of files of a media type ("text/plain" gives "txt"); empty when none is known.
[[nodiscard]] std::string_view extension_of_media_type(std::string_view media_type);

/// The media type that bytes show by themselves, from their beginning: "text/plain",
/// "application/pdf" and a few more; empty when they show none.
[[nodiscard]] std::string_view media_type_of_bytes(std::string_view beginning);

}  // namespace quoll::share
