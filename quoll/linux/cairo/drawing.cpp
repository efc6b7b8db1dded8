#include "quoll/linux/cairo/drawing.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>
#include <utility>

#include "quoll/linux/cairo/handles.h"
#include "quoll/linux/cairo/image_surface.h"
#include "quoll/linux/cairo/matrix.h"
#include "quoll/linux/cairo/text_layout.h"
#include "quoll/platform/log.h"

namespace quoll::cairo_drawing {

namespace {

using foundation::Bytes;
using platform::Colour;
using platform::NSPoint;
using platform::NSRect;
using platform::NSSize;

/// The largest coordinate that cairo is given, in units of the surface. cairo's own numbers have 24
/// bits before the point, and the points that it computes (corners, caps) may lie farther out.
constexpr double kFarthest = 1 << 18;
/// The shortest side that an image is stretched to.
constexpr double kShortestSide = 1e-6;

double part_of_one(double part) {
  return part > 0 ? std::min(part, 1.0) : 0;
}

NSRect grown(const NSRect& rect, double margin) {
  return {{rect.origin.x - margin, rect.origin.y - margin},
          {rect.size.width + 2 * margin, rect.size.height + 2 * margin}};
}

cairo_status_t append(void* closure, const unsigned char* bytes, unsigned length) {
  auto& file = *static_cast<Bytes*>(closure);
  try {
    file.insert(file.end(), bytes, bytes + length);
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;  // an exception must not pass through cairo
  }
  return CAIRO_STATUS_SUCCESS;
}

/// The path is empty between two operations.
class CairoDrawing final : public Drawing {
 public:
  CairoDrawing(FileType type, const NSSize& size)
      : type_(type), surface_(make_surface(size)), cairo_(cairo_create(surface_.get())) {}
  CairoDrawing(const CairoDrawing&) = delete;
  CairoDrawing& operator=(const CairoDrawing&) = delete;
  ~CairoDrawing() override = default;

  /// True while nothing has failed; otherwise the log says what did.
  bool is_good() {
    cairo_status_t status = cairo_surface_status(surface_.get());
    if (status == CAIRO_STATUS_SUCCESS) {
      status = cairo_status(cairo_.get());
    }
    return is_good(status);
  }

  std::optional<Bytes> finish() override {
    if (std::exchange(ended_, true) || !is_good()) {
      return std::nullopt;
    }
    if (type_ == FileType::kPng &&
        !is_good(cairo_surface_write_to_png_stream(surface_.get(), append, &file_))) {
      return std::nullopt;
    }
    cairo_surface_finish(surface_.get());
    return is_good(cairo_surface_status(surface_.get())) ? std::optional(std::move(file_))
                                                         : std::nullopt;
  }

  std::uint32_t pixel(std::int64_t column, std::int64_t row) override {
    if (type_ != FileType::kPng || ended_ || column < 0 || row < 0 ||
        column >= cairo_image_surface_get_width(surface_.get()) ||
        row >= cairo_image_surface_get_height(surface_.get())) {
      return 0;
    }
    cairo_surface_flush(surface_.get());
    const unsigned char* const pixels = cairo_image_surface_get_data(surface_.get());
    const std::int64_t stride = cairo_image_surface_get_stride(surface_.get());
    std::uint32_t value = 0;
    std::copy_n(pixels + row * stride + column * std::int64_t{sizeof value}, sizeof value,
                reinterpret_cast<unsigned char*>(&value));
    return value;
  }

  void fill_rounded_rect(const NSRect& rect, double radius, const Colour& colour) override {
    if (add_outline(rect, radius, 0)) {
      set_colour(colour);
      cairo_fill(cairo_.get());
    }
  }

  void stroke_rounded_rect(const NSRect& rect, double radius, double line_width,
                           const Colour& colour) override {
    const double width = usable_width(line_width);
    if (width > 0 && add_outline(rect, radius, width)) {
      stroke(width, colour);
    }
  }

  void stroke_line(const NSPoint& from, const NSPoint& to, double line_width,
                   const Colour& colour) override {
    const double width = usable_width(line_width);
    if (width > 0) {
      add_point(from);
      add_point(to);
      stroke(width, colour);
    }
  }

  void draw_image(const platform::NSImage& image, const NSRect& rect) override {
    const NSRect place = usable(rect);
    const NSRect seen = visible(place, 0);
    if (is_empty(seen) || place.size.width < kShortestSide || place.size.height < kShortestSide) {
      return;
    }
    const Handle<cairo_surface_t> pixels = read_image(image);
    if (!pixels) {
      return;
    }
    const double across = cairo_image_surface_get_width(pixels.get()) / place.size.width;
    double down = cairo_image_surface_get_height(pixels.get()) / place.size.height;
    double top = place.origin.y;
    if (!image.flipped) {
      top += place.size.height;
      down = -down;
    }
    cairo_matrix_t to_pixels;
    cairo_matrix_init(&to_pixels, across, 0, 0, down, -across * place.origin.x, -down * top);
    const Handle<cairo_pattern_t> pattern(cairo_pattern_create_for_surface(pixels.get()));
    cairo_pattern_set_matrix(pattern.get(), &to_pixels);
    cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);  // else the edges fade
    add_rectangle(seen);
    cairo_set_source(cairo_.get(), pattern.get());
    cairo_fill(cairo_.get());
  }

  void draw_text(std::string_view text, const NSRect& rect,
                 const platform::TextStyle& style) override {
    const NSRect place = usable(rect);
    if (is_empty(visible(place, 0))) {
      return;
    }
    const platform::SavedGraphicsState state(*this);
    clip(place);
    if (isFlipped()) {
      translate(place.origin.x, place.origin.y);
    } else {
      translate(place.origin.x, place.origin.y + place.size.height);
      flip();
    }
    set_colour(style.colour);
    draw_lines(cairo_.get(), text, place.size.width, style.size);
  }

  void clip(const NSRect& rect) override {
    const NSRect seen = visible(usable(rect), 0);
    if (!is_empty(seen)) {  // an empty path would hide everything
      add_rectangle(seen);
    }
    cairo_clip(cairo_.get());
  }

  void concat(const platform::AffineTransform& transform) override {
    cairo_matrix_t before;
    cairo_get_matrix(cairo_.get(), &before);
    cairo_matrix_t after;
    cairo_matrix_init(&after, transform.a, transform.b, transform.c, transform.d, transform.tx,
                      transform.ty);
    cairo_matrix_multiply(&after, &after, &before);
    if (is_usable(after)) {
      cairo_set_matrix(cairo_.get(), &after);
    } else {
      clip({});
    }
  }

  NSRect pixel_aligned(const NSRect& rect) const override {
    if (type_ != FileType::kPng) {
      return rect;
    }
    double left = rect.origin.x;
    double top = rect.origin.y;
    double right = left + rect.size.width;
    double bottom = top + rect.size.height;
    around(cairo_user_to_device, left, top, right, bottom);
    left = std::floor(left);
    top = std::floor(top);
    right = std::ceil(right);
    bottom = std::ceil(bottom);
    around(cairo_device_to_user, left, top, right, bottom);
    return {{left, top}, {right - left, bottom - top}};
  }

 protected:
  void save() override { cairo_save(cairo_.get()); }
  void restore() override { cairo_restore(cairo_.get()); }

 private:
  Handle<cairo_surface_t> make_surface(const NSSize& size) {
    switch (type_) {
      case FileType::kPdf:
        return Handle<cairo_surface_t>(
            cairo_pdf_surface_create_for_stream(append, &file_, size.width, size.height));
      case FileType::kSvg:
        return Handle<cairo_surface_t>(
            cairo_svg_surface_create_for_stream(append, &file_, size.width, size.height));
      case FileType::kPng:
        break;
    }
    return Handle<cairo_surface_t>(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(std::ceil(size.width)),
                                   static_cast<int>(std::ceil(size.height))));
  }

  static bool is_good(cairo_status_t status) {
    if (status != CAIRO_STATUS_SUCCESS) {
      platform::log("drawing: %@", cairo_status_to_string(status));
    }
    return status == CAIRO_STATUS_SUCCESS;
  }

  /// The smallest rectangle around a rectangle whose corners `change` has converted.
  void around(void (*change)(cairo_t*, double*, double*), double& left, double& top, double& right,
              double& bottom) const {
    double xs[] = {left, right, left, right};
    double ys[] = {top, top, bottom, bottom};
    for (int corner = 0; corner < 4; ++corner) {
      change(cairo_.get(), &xs[corner], &ys[corner]);
    }
    left = *std::min_element(xs, xs + 4);
    right = *std::max_element(xs, xs + 4);
    top = *std::min_element(ys, ys + 4);
    bottom = *std::max_element(ys, ys + 4);
  }

  /// The part of the rectangle that lies inside the clip, with a margin around the clip. The rest
  /// cannot be seen.
  NSRect visible(const NSRect& rect, double margin) const {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    cairo_clip_extents(cairo_.get(), &left, &top, &right, &bottom);
    const NSRect inside{{left, top}, {right - left, bottom - top}};
    return is_empty(inside) ? NSRect{} : intersection(rect, grown(inside, margin));
  }

  void add_rectangle(const NSRect& rect) {
    cairo_rectangle(cairo_.get(), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  }

  /// Adds the outline, as far as it can be seen with a line of that width. False when none of it
  /// can.
  bool add_outline(const NSRect& rect, double wanted_radius, double line_width) {
    const NSRect whole = usable(rect);
    const double radius =
        wanted_radius > 0
            ? std::min({wanted_radius, whole.size.width / 2, whole.size.height / 2, reach()})
            : 0;
    const NSRect seen = visible(whole, radius + line_width);
    if (is_empty(seen)) {
      return false;
    }
    if (radius == 0) {
      add_rectangle(seen);
    } else {
      add_corners(seen, radius);
    }
    return true;
  }

  void add_corners(const NSRect& rect, double radius) {
    constexpr double kQuarter = std::numbers::pi / 2;
    const double left = rect.origin.x + radius;
    const double top = rect.origin.y + radius;
    const double right = rect.origin.x + rect.size.width - radius;
    const double bottom = rect.origin.y + rect.size.height - radius;
    cairo_arc(cairo_.get(), right, top, radius, -kQuarter, 0);
    cairo_arc(cairo_.get(), right, bottom, radius, 0, kQuarter);
    cairo_arc(cairo_.get(), left, bottom, radius, kQuarter, 2 * kQuarter);
    cairo_arc(cairo_.get(), left, top, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cairo_.get());
  }

  void add_point(const NSPoint& point) {
    const NSPoint place = usable(NSRect{point, {}}).origin;
    const double farthest = reach();
    cairo_line_to(cairo_.get(), std::clamp(place.x, -farthest, farthest),
                  std::clamp(place.y, -farthest, farthest));
  }

  /// Not more than 0 when there is no line to draw.
  [[nodiscard]] double usable_width(double width) const {
    return width > 0 ? std::min(width, reach()) : 0;
  }

  /// Draws along the path. cairo cannot hold the width when its unit is far smaller than a pixel.
  /// Therefore the width is given in units of about a pixel, which does not change the path.
  void stroke(double width, const Colour& colour) {
    const platform::SavedGraphicsState state(*this);
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo_.get(), &matrix);
    const double unit = longest_unit(matrix);
    cairo_scale(cairo_.get(), 1 / unit, 1 / unit);
    cairo_set_line_width(cairo_.get(), width * unit);
    set_colour(colour);
    cairo_stroke(cairo_.get());
  }

  /// The largest coordinate and line width, in the units of the current transform.
  [[nodiscard]] double reach() const {
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo_.get(), &matrix);
    return kFarthest / longest_unit(matrix);
  }

  void set_colour(const Colour& colour) {
    cairo_set_source_rgba(cairo_.get(), part_of_one(colour.red), part_of_one(colour.green),
                          part_of_one(colour.blue), part_of_one(colour.alpha));
  }

  const FileType type_;
  bool ended_ = false;
  Bytes file_;  // before the surface, which writes to it until it is destroyed
  Handle<cairo_surface_t> surface_;
  Handle<cairo_t> cairo_;
};

}  // namespace

std::unique_ptr<Drawing> make_drawing(FileType type, const NSSize& size) {
  if (!(size.width > 0 && size.width <= kLongestSide && size.height > 0 &&
        size.height <= kLongestSide)) {
    platform::log_line("drawing: the size cannot be drawn");
    return nullptr;
  }
  auto drawing = std::make_unique<CairoDrawing>(type, size);
  return drawing->is_good() ? std::move(drawing) : nullptr;
}

}  // namespace quoll::cairo_drawing
