#pragma once

#include "quoll/linux/cairo/handles.h"
#include "quoll/platform/images.h"

namespace quoll::cairo_drawing {

/// The pixels of an image; null when they cannot be read (the log says why).
[[nodiscard]] Handle<cairo_surface_t> read_image(const platform::NSImage& image);

}  // namespace quoll::cairo_drawing
