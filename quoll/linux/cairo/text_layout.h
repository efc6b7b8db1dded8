#pragma once

#include <cairo.h>

#include <string_view>

namespace quoll::cairo_drawing {

/// Draws a text from the origin downwards, in the user's sans-serif font and the current colour.
/// `width` is that of the lines; width and size are in units. Lines break at the same words on
/// every kind of drawing. Text below the clip takes no time. Bytes that are not UTF-8 show as
/// U+FFFD.
///
/// Nothing is drawn when the font size is not above 0, is above 4096 units or pixels, or is above
/// 32768 with the scale applied twice.
void draw_lines(cairo_t* drawing, std::string_view text, double width, double font_size);

}  // namespace quoll::cairo_drawing
