#include "quoll/linux/cairo/text_layout.h"

#include <algorithm>
#include <string>

#include "quoll/linux/cairo/handles.h"
#include "quoll/linux/cairo/matrix.h"

namespace quoll::cairo_drawing {

namespace {

constexpr const char* kFontFamily = "Sans";
/// In units and in the drawing's own: the font library fails beyond some size, and one failure ends
/// the whole drawing.
constexpr double kLargestFont = 4096;
/// The same library is asked for the size with the scale in it twice.
constexpr double kLargestScaledFont = 32768;
/// The setter of lines counts in small whole parts of units.
constexpr double kWidestLine = 1 << 20;
/// More than any page shows.
constexpr std::size_t kLongestText = std::size_t{256} << 10;
/// The setter's time grows with the square of what it is given at once.
constexpr std::size_t kFirstPiece = 1024;

/// Whether letters of that size can be had and be seen.
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
  // Lines that are broken by the pixel differ from paper; coloured edges differ by screen.
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

/// The first bytes of a text, as many as there are up to `length`, without a part of a character.
std::string_view piece_of(std::string_view text, std::size_t length) {
  const auto continues = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
  };
  while (length < text.size() && continues(text[length])) {
    --length;
  }
  return text.substr(0, length);
}

/// Where the lines that were drawn end: in the text, and below the first one's upper edge.
struct End {
  std::size_t bytes = 0;
  double height = 0;
};

/// Draws the lines of the layout at that height, the last one only when it is `whole`.
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
    const std::string_view piece = piece_of(rest, length);
    const bool last = piece.size() == rest.size();
    pango_layout_set_text(layout.get(), piece.data(), static_cast<int>(piece.size()));
    if (!last && pango_layout_get_line_count(layout.get()) < 2) {
      length *= 2;  // a line longer than the piece
      continue;
    }
    const End end = draw_layout(drawing, layout.get(), height, last);
    rest.remove_prefix(last ? rest.size() : end.bytes);
    height += end.height;
  }
  cairo_new_path(drawing);
}

}  // namespace quoll::cairo_drawing
