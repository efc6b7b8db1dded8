#pragma once

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

/// The orientation that EXIF data names, 1 to 8; 1 when it names none or cannot be read. The data
/// begins with the byte order, or with "Exif" and two zeros before it.
[[nodiscard]] unsigned orientation_of_exif(File exif);

}  // namespace quoll::image_helper
