#pragma once

#include <memory>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

// One reader a format, each taking a file that begins as its format does. They raise `Refused`, and
// give the picture as it is stored: not turned, with whatever profile the file names.
std::unique_ptr<PictureSource> open_png(File file);
std::unique_ptr<PictureSource> open_jpeg(File file);
std::unique_ptr<PictureSource> open_tiff(File bytes);
std::unique_ptr<PictureSource> open_gif(File bytes);
std::unique_ptr<PictureSource> open_webp(File file);

/// The first image of a file of any of these formats, turned upright, with a profile only when it
/// is one for its channels. Raises `Refused`.
std::unique_ptr<PictureSource> open_picture(File file);

}  // namespace quoll::image_helper
