#pragma once

#include <cairo.h>

#include <string_view>

namespace quoll::cairo_drawing {

/// Draws a text from the origin on, in lines of that width, in the user's sans-serif font and the
/// colour that is set; width and size in units, y growing downwards. Lines are broken alike on
/// every kind of drawing. What lies below the clip costs nothing. Bytes that are not UTF-8 show as
/// U+FFFD; a font size that is not above 0, is above 4096 units or pixels, or is above 32768 with
/// the scale applied twice, shows nothing.
void draw_lines(cairo_t* drawing, std::string_view text, double width, double font_size);

}  // namespace quoll::cairo_drawing
