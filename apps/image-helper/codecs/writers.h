#pragma once

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

// Write a picture as a whole file, to a descriptor at the beginning of an empty file. They raise
// `ImageError` when the picture is damaged or the bytes cannot be written; what was written then is
// of no use.

void write_png(PictureSource& source, int descriptor);
/// The descriptor must be able to seek.
void write_tiff(PictureSource& source, int descriptor);

}  // namespace quoll::image_helper
