#pragma once

#include <string_view>

namespace quoll::platform {

inline constexpr std::string_view kUTTypeURL = "public.url";
inline constexpr std::string_view kUTTypeFileURL = "public.file-url";
inline constexpr std::string_view kUTTypeImage = "public.image";

/// "Holds an item of type T": true when `type` is `wanted` or one of its kinds. A file URL is a
/// URL; PNG, JPEG, TIFF, GIF, BMP, WebP and HEIC are images; PDF, movies and plain text are
/// neither.
[[nodiscard]] bool type_conforms_to(std::string_view type, std::string_view wanted);

}  // namespace quoll::platform
