#pragma once

#include <memory>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

/// The picture turned upright by its orientation, which becomes 1. A picture that is upright
/// already is answered as it is.
[[nodiscard]] std::unique_ptr<PictureSource> upright(std::unique_ptr<PictureSource> source);

}  // namespace quoll::image_helper
