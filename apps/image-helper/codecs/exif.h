#pragma once

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

/// The orientation in EXIF data, 1 to 8; 1 when it has none or cannot be read. The data begins with
/// its byte order, or with "Exif" and two zero bytes before that.
[[nodiscard]] unsigned orientation_of_exif(ByteView exif);

}  // namespace quoll::image_helper
