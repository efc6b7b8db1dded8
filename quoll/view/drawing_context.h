#pragma once

#include <string_view>

#include "quoll/foundation/polymorphic.h"
#include "quoll/platform/images.h"
#include "quoll/view/geometry.h"

namespace quoll::platform {

/// A colour of the screen. Each part lies between 0 and 1: a number outside is moved to the nearer
/// end, and NaN becomes 0.
struct Colour {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
};

/// How a piece of text is drawn.
struct TextStyle {
  double size = 12;  ///< of the font, in units; an impossible size draws nothing
  Colour colour{};
};

/// A change of coordinates as a matrix: x becomes a x + c y + tx, y becomes b x + d y + ty.
struct AffineTransform {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
  double tx = 0;
  double ty = 0;
};

/// `NSGraphicsContext`: the surface that drawing code paints on, with its current transform and
/// clip. One thread uses it at a time.
///
/// The origin of a new context is at the top left, and y grows downwards. No operation raises.
/// Geometry that holds NaN, has no size, or lies outside the clip draws nothing.
class NSGraphicsContext : public foundation::Polymorphic {
 public:
  /// `currentContext`: the context that this thread draws into, or null when it draws into none.
  /// While a view is displayed, this is the context that it is displayed in; the pointer is valid
  /// until the drawing returns.
  [[nodiscard]] static NSGraphicsContext* currentContext();

  /// `isFlipped`: whether y grows downwards. `flip` changes this; other transforms do not. Text
  /// stands upright either way.
  [[nodiscard]] bool isFlipped() const { return flipped_; }

  void fill_rect(const NSRect& rect, const Colour& colour) { fill_rounded_rect(rect, 0, colour); }
  /// Draws the outline. The line runs along the edge, half of its width on either side.
  void stroke_rect(const NSRect& rect, double line_width, const Colour& colour) {
    stroke_rounded_rect(rect, 0, line_width, colour);
  }
  /// Fills a rectangle with round corners. The radius is at most half of the shorter side; a larger
  /// one is reduced to that.
  virtual void fill_rounded_rect(const NSRect& rect, double radius, const Colour& colour) = 0;
  virtual void stroke_rounded_rect(const NSRect& rect, double radius, double line_width,
                                   const Colour& colour) = 0;
  virtual void stroke_line(const NSPoint& from, const NSPoint& to, double line_width,
                           const Colour& colour) = 0;

  /// Draws the whole image, stretched to the rectangle. The image stands upright where its own
  /// `isFlipped` and that of the context are the same, and upside down otherwise: an image that is
  /// marked as flipped has its top row at the rectangle's smallest y, any other at the largest. An
  /// image that cannot be read draws nothing, and the log says why.
  virtual void draw_image(const NSImage& image, const NSRect& rect) = 0;

  /// Draws UTF-8 text, upright, from the upper edge of the rectangle. Lines are broken at the
  /// rectangle's width; text below its lower edge is cut off. Bytes that are not UTF-8 show as
  /// U+FFFD.
  virtual void draw_text(std::string_view text, const NSRect& rect, const TextStyle& style) = 0;

  /// Limits all later drawing to this rectangle, within the limits that were set before.
  virtual void clip(const NSRect& rect) = 0;

  /// Applies a transform to all later drawing, before the transforms that were set earlier. After
  /// one that cannot be inverted, or that scales beyond all bounds, nothing is drawn any more.
  virtual void concat(const AffineTransform& transform) = 0;
  void translate(double x, double y) { concat({.tx = x, .ty = y}); }
  void scale(double x, double y) { concat({.a = x, .d = y}); }
  /// Turns the y axis over: what was at y is now at -y, and `isFlipped` changes.
  void flip();

  /// The smallest rectangle of whole pixels around `rect`. A context without pixels (a page)
  /// answers `rect` itself.
  [[nodiscard]] virtual NSRect pixel_aligned(const NSRect& rect) const = 0;

 protected:
  /// Save and restore transform and clip. Calls are nested, each `restore` with the last `save`.
  virtual void save() = 0;
  virtual void restore() = 0;

 private:
  friend class SavedGraphicsState;

  bool flipped_ = true;
};

/// Saves transform, clip and `isFlipped`, and restores them at the end of the scope, also when the
/// drawing raises.
class SavedGraphicsState {
 public:
  explicit SavedGraphicsState(NSGraphicsContext& context)
      : context_(context), flipped_(context.flipped_) {
    context_.save();
  }
  SavedGraphicsState(const SavedGraphicsState&) = delete;
  SavedGraphicsState& operator=(const SavedGraphicsState&) = delete;
  ~SavedGraphicsState() {
    context_.restore();
    context_.flipped_ = flipped_;
  }

 private:
  NSGraphicsContext& context_;
  bool flipped_;
};

/// Makes a context the current one of this thread, until the end of the scope.
class ScopedGraphicsContext {
 public:
  explicit ScopedGraphicsContext(NSGraphicsContext& context);
  ScopedGraphicsContext(const ScopedGraphicsContext&) = delete;
  ScopedGraphicsContext& operator=(const ScopedGraphicsContext&) = delete;
  ~ScopedGraphicsContext();

 private:
  NSGraphicsContext* before_;
};

}  // namespace quoll::platform
