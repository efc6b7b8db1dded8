#pragma once

#include <memory>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

/// The picture as a viewer shows it: turned as its orientation says, which is 1 afterwards. A
/// picture that already stands upright is given back as it is.
[[nodiscard]] std::unique_ptr<PictureSource> upright(std::unique_ptr<PictureSource> source);

}  // namespace quoll::image_helper
