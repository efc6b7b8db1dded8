#include "quoll/linux/cairo/text_layout.h"

#include <algorithm>
#include <string>

#include "quoll/foundation/text.h"
#include "quoll/linux/cairo/handles.h"
#include "quoll/linux/cairo/matrix.h"

namespace quoll::cairo_drawing {

namespace {

constexpr const char* kFontFamily = "Sans";
/// The limit for a font's size, both in units and in pixels. pango fails beyond some size, and one
/// failure ends the whole drawing.
constexpr double kLargestFont = 4096;
/// The limit for the size with the scale applied twice, which pango asks for too.
constexpr double kLargestScaledFont = 32768;
/// The widest line in units. pango counts in 1/1024 of a unit, in 32 bits.
constexpr double kWidestLine = 1 << 20;
/// In bytes: more than a page can show.
constexpr std::size_t kLongestText = std::size_t{256} << 10;
/// Text is laid out in pieces, because pango's time grows with the square of the length. In bytes.
constexpr std::size_t kFirstPiece = 1024;

/// Whether text of that size can be drawn and seen.
bool has_font(cairo_t* drawing, double size) {
  cairo_matrix_t matrix;
  cairo_get_matrix(drawing, &matrix);
  const double unit = longest_unit(matrix);
  return size * PANGO_SCALE >= 1 && size <= kLargestFont && size * unit <= kLargestFont &&
         size * unit * unit <= kLargestScaledFont;
}

std::string valid_text(std::string_view bytes) {
  const std::string_view shown = bytes.substr(0, kLongestText);
  return Handle<char>(g_utf8_make_valid(shown.data(), static_cast<gssize>(shown.size()))).get();
}

Handle<PangoLayout> make_layout(cairo_t* drawing, double width, double font_size) {
  Handle<PangoLayout> layout(pango_cairo_create_layout(drawing));
  // Lines must break at the same words on a screen and on paper, so letters are not fitted to
  // pixels. Grey edges look the same on every screen, coloured ones do not.
  const Handle<cairo_font_options_t> options(cairo_font_options_create());
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  PangoContext* const context = pango_layout_get_context(layout.get());
  pango_cairo_context_set_font_options(context, options.get());
  pango_context_set_round_glyph_positions(context, FALSE);
  pango_layout_context_changed(layout.get());

  const Handle<PangoFontDescription> font(pango_font_description_new());
  pango_font_description_set_family_static(font.get(), kFontFamily);
  pango_font_description_set_absolute_size(font.get(), font_size * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font.get());
  pango_layout_set_width(layout.get(),
                         static_cast<int>(std::min(width, kWidestLine) * PANGO_SCALE));
  pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  return layout;
}

/// Where the drawn lines end: their length in the text, and their height.
struct End {
  std::size_t bytes = 0;
  double height = 0;
};

/// Draws the lines of the layout from `top` downwards. The last line is drawn only when `whole` is
/// set; it may go on in the next piece.
End draw_layout(cairo_t* drawing, PangoLayout* layout, double top, bool whole) {
  const Handle<PangoLayoutIter> line(pango_layout_get_iter(layout));
  while (whole || !pango_layout_iter_at_last_line(line.get())) {
    PangoRectangle place;
    pango_layout_iter_get_line_extents(line.get(), nullptr, &place);
    cairo_move_to(drawing, pango_units_to_double(place.x),
                  top + pango_units_to_double(pango_layout_iter_get_baseline(line.get())));
    pango_cairo_show_layout_line(drawing, pango_layout_iter_get_line_readonly(line.get()));
    if (pango_layout_iter_next_line(line.get()) == FALSE) {
      break;
    }
  }
  PangoRectangle rest;
  pango_layout_iter_get_line_extents(line.get(), nullptr, &rest);
  const int start = pango_layout_iter_get_line_readonly(line.get())->start_index;
  return {static_cast<std::size_t>(start), pango_units_to_double(rest.y)};
}

}  // namespace

void draw_lines(cairo_t* drawing, std::string_view text, double width, double font_size) {
  if (!has_font(drawing, font_size)) {
    return;
  }
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;
  cairo_clip_extents(drawing, &left, &top, &right, &bottom);

  const std::string valid = valid_text(text);
  const auto layout = make_layout(drawing, width, font_size);
  std::string_view rest = valid;
  double height = 0;
  std::size_t length = kFirstPiece;
  while (!rest.empty() && height < bottom) {
    const std::string_view piece = foundation::whole_characters(rest, length);
    const bool last = piece.size() == rest.size();
    pango_layout_set_text(layout.get(), piece.data(), static_cast<int>(piece.size()));
    if (!last && pango_layout_get_line_count(layout.get()) < 2) {
      length *= 2;  // the line is longer than the piece
      continue;
    }
    const End end = draw_layout(drawing, layout.get(), height, last);
    rest.remove_prefix(last ? rest.size() : end.bytes);
    height += end.height;
  }
  cairo_new_path(drawing);
}

}  // namespace quoll::cairo_drawing
