#pragma once

#include <cairo.h>
#include <pango/pangocairo.h>

#include <memory>

namespace quoll::cairo_drawing {

struct Release {
  void operator()(cairo_t* drawing) const { cairo_destroy(drawing); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
  void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
  void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
  void operator()(PangoLayoutIter* line) const { pango_layout_iter_free(line); }
  void operator()(char* text) const { g_free(text); }
};

/// Owns an object of cairo or pango and releases it.
template <typename T>
using Handle = std::unique_ptr<T, Release>;

}  // namespace quoll::cairo_drawing
