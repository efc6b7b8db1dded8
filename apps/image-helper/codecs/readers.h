#pragma once

#include <memory>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

// One reader for each format. The file must begin as its format does. The picture is answered as it
// is stored: not turned, and with the profile that the file has, fitting or not. They raise
// `Refused`.
std::unique_ptr<PictureSource> open_png(File file);
std::unique_ptr<PictureSource> open_jpeg(File file);
std::unique_ptr<PictureSource> open_tiff(File bytes);
std::unique_ptr<PictureSource> open_gif(File bytes);
std::unique_ptr<PictureSource> open_webp(File file);

/// The first image of a file of any of these formats: upright, and with its profile only if that
/// fits the channels. Raises `Refused`.
std::unique_ptr<PictureSource> open_picture(File file);

}  // namespace quoll::image_helper
