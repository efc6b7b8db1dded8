#pragma once

#include <string_view>

#include "quoll/platform/images.h"
#include "quoll/view/geometry.h"

namespace quoll::platform {

/// A colour of the screen, each part from 0 to 1; what lies outside is cut to that, NaN is 0.
struct Colour {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
};

/// How a piece of text is drawn.
struct TextStyle {
  double size = 12;  ///< of the font, in units; one that no font has shows nothing
  Colour colour{};
};

/// The matrix of a change of coordinates: x becomes a x + c y + tx, y becomes b x + d y + ty.
struct AffineTransform {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
  double tx = 0;
  double ty = 0;
};

/// `NSGraphicsContext`: what a block draws with. It belongs to one thread at a time.
///
/// A new context has its origin at the top left and y grows downwards. Whatever the numbers are, an
/// operation raises nothing: what is not a number, has no size, or lies outside the clip draws
/// nothing.
class NSGraphicsContext {
 public:
  NSGraphicsContext() = default;
  NSGraphicsContext(const NSGraphicsContext&) = delete;
  NSGraphicsContext& operator=(const NSGraphicsContext&) = delete;
  virtual ~NSGraphicsContext() = default;

  /// `currentContext`: the context that this thread draws into; null when it draws into none. While
  /// a view is displayed it is the one that the view is displayed in, valid until the drawing
  /// returns.
  [[nodiscard]] static NSGraphicsContext* currentContext();

  /// `isFlipped`: whether y grows downwards. Text always stands upright; `flip` changes this, other
  /// transforms do not.
  [[nodiscard]] bool isFlipped() const { return flipped_; }

  void fill_rect(const NSRect& rect, const Colour& colour) { fill_rounded_rect(rect, 0, colour); }
  /// The line runs along the edge, half of it on either side.
  void stroke_rect(const NSRect& rect, double line_width, const Colour& colour) {
    stroke_rounded_rect(rect, 0, line_width, colour);
  }
  /// A radius of more than half a side is cut to that.
  virtual void fill_rounded_rect(const NSRect& rect, double radius, const Colour& colour) = 0;
  virtual void stroke_rounded_rect(const NSRect& rect, double radius, double line_width,
                                   const Colour& colour) = 0;
  virtual void stroke_line(const NSPoint& from, const NSPoint& to, double line_width,
                           const Colour& colour) = 0;

  /// The whole image, stretched to the rectangle. Its own y axis is laid along that of the
  /// coordinates: the top row comes to the rectangle's smallest y when the image is marked as
  /// flipped, else to the largest. So an image stands upright where `isFlipped` is the same for
  /// both. An image that cannot be read draws nothing, and the log says why.
  virtual void draw_image(const NSImage& image, const NSRect& rect) = 0;

  /// UTF-8 text from the rectangle's upper edge on, upright, in lines that are broken at its width;
  /// what is below the rectangle is cut off. Bytes that are not UTF-8 show as U+FFFD.
  virtual void draw_text(std::string_view text, const NSRect& rect, const TextStyle& style) = 0;

  /// From here on only what lies inside the rectangle, and inside the clip so far, is drawn.
  virtual void clip(const NSRect& rect) = 0;

  /// What is drawn from here on goes through the transform first, then through those before. One
  /// that cannot be undone or blows up beyond all measure hides what is drawn from here on.
  virtual void concat(const AffineTransform& transform) = 0;
  void translate(double x, double y) { concat({.tx = x, .ty = y}); }
  void scale(double x, double y) { concat({.a = x, .d = y}); }
  /// Turns the y axis over: what was at y is at -y, and `isFlipped` is the opposite.
  void flip();

  /// The smallest rectangle of whole pixels around this one; the same one where there are no
  /// pixels.
  [[nodiscard]] virtual NSRect pixel_aligned(const NSRect& rect) const = 0;

 protected:
  /// Keep and bring back transform and clip, one inside the other.
  virtual void save() = 0;
  virtual void restore() = 0;

 private:
  friend class SavedGraphicsState;

  bool flipped_ = true;
};

/// Brings transform, clip and `isFlipped` back to what they were, also when the drawing raises.
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

/// Makes a context the current one of this thread for as long as it lives.
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
