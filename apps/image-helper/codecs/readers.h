#pragma once

#include <memory>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

// One reader for each format. The file must begin as its format does. The picture is answered as it
// is stored: not turned, and with the profile that the file has, fitting or not. They raise
// `ImageError`.
std::unique_ptr<PictureSource> open_png(ByteView file);
std::unique_ptr<PictureSource> open_jpeg(ByteView file);
std::unique_ptr<PictureSource> open_tiff(ByteView bytes);
std::unique_ptr<PictureSource> open_gif(ByteView bytes);
std::unique_ptr<PictureSource> open_webp(ByteView file);

/// The first image of a file of any of these formats: upright, and with its profile only if that
/// fits the channels. Raises `ImageError`.
std::unique_ptr<PictureSource> open_picture(ByteView file);

}  // namespace quoll::image_helper
