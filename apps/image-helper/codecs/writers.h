#pragma once

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

// Write the picture as a whole file to a descriptor that stands at its beginning. They raise
// `Refused` when the picture is damaged or the bytes cannot be written; what was written until then
// is of no use.

void write_png(PictureSource& source, int descriptor);
/// Needs a descriptor that can seek.
void write_tiff(PictureSource& source, int descriptor);

}  // namespace quoll::image_helper
