#pragma once

namespace quoll::image_helper {

/// Gives up what reading an image does not need, for whatever the image's bytes may bring about:
/// the process ends with the one that started it, and its memory, its time and its result are
/// limited. From here on it opens nothing and works on its standard streams.
void confine();

}  // namespace quoll::image_helper
