#pragma once

#include <memory>
#include <vector>

#include "quoll/view/drawing_context.h"
#include "quoll/view/geometry.h"

namespace quoll::platform {

/// Bits of the autoresizing mask, under the platform's numbers.
inline constexpr unsigned NSViewWidthSizable = 2;
inline constexpr unsigned NSViewHeightSizable = 16;

/// `NSView`: a rectangle of a drawing, with views in it. Views are held by `std::shared_ptr`; a
/// view holds its subviews and knows its superview. A whole tree belongs to one thread.
///
/// A view's own coordinates begin at a corner of its rectangle: at the top left with y growing
/// downwards when the view is flipped, else at the bottom left with y growing upwards. Its
/// subviews' frames are in these coordinates. Numbers that cannot be worked with are taken as
/// `usable` says. Trees may be deep: nothing here calls itself level by level.
///
///     const auto page = FlippedView::initWithFrame({{0, 0}, {400, 300}}, draw_page);
///     page->display(context);
class NSView : public std::enable_shared_from_this<NSView> {
 public:
  NSView() = default;
  /// `initWithFrame:`.
  explicit NSView(const NSRect& frame);
  NSView(const NSView&) = delete;
  NSView& operator=(const NSView&) = delete;
  virtual ~NSView();

  /// `isFlipped`: a view gives the same answer all its life.
  [[nodiscard]] virtual bool isFlipped() const { return false; }

  /// The view's rectangle in its superview's coordinates.
  [[nodiscard]] const NSRect& frame() const { return frame_; }
  void setFrame(const NSRect& frame);
  /// `setFrameSize:`: a subview whose mask holds a side's bit follows by the same difference, and
  /// its own subviews follow it; none becomes smaller than 0. Origins stay.
  void setFrameSize(const NSSize& size);
  /// The same rectangle in the view's own coordinates: the origin is 0.
  [[nodiscard]] NSRect bounds() const { return {{}, frame_.size}; }

  /// What of the view follows its superview: the sum of the bits above, 0 at first. Other bits are
  /// kept and mean nothing.
  [[nodiscard]] unsigned autoresizingMask() const { return mask_; }
  void setAutoresizingMask(unsigned mask) { mask_ = mask; }

  /// Null for a view that is in none.
  [[nodiscard]] std::shared_ptr<NSView> superview() const { return superview_.lock(); }
  /// From back to front.
  [[nodiscard]] const std::vector<std::shared_ptr<NSView>>& subviews() const { return subviews_; }
  /// `addSubview:`: puts a view in front of the other subviews, out of the superview that it was
  /// in. Null, this view itself or one that it is in raises `NSInvalidArgumentException`.
  void addSubview(std::shared_ptr<NSView> view);
  /// Does nothing for a view that is in none.
  void removeFromSuperview();

  /// Whether a part of the view waits to be drawn again; all of a new view does.
  [[nodiscard]] bool needsDisplay() const { return !is_empty(dirty_); }
  /// `setNeedsDisplay:`: all of the view waits to be drawn again, or none.
  void setNeedsDisplay(bool needed);
  /// `setNeedsDisplayInRect:`: that part too. Since views let through what is behind them, the part
  /// waits in every view around this one as well.
  void setNeedsDisplayInRect(const NSRect& rect);

  /// Draws the view and its subviews into the context, the view's upper left corner at the origin.
  void display(NSGraphicsContext& context);
  /// The same for a part of the view, in whole pixels: nothing outside of it is touched. Views are
  /// drawn from back to front, each clipped to its own rectangle and those around it; one that has
  /// nothing in the part is left out. When the part holds all that waits, nothing waits any more.
  /// What a view's drawing throws passes through; the part then waits still, in that view too.
  void displayRect(const NSRect& rect, NSGraphicsContext& context);
  /// `displayIfNeeded`: the same for the part that waits.
  void displayIfNeeded(NSGraphicsContext& context);

  /// `drawRect:`: draws the part of the view inside `dirty`, in the view's own coordinates, into
  /// the current context. Called while the view is displayed. The base class draws nothing.
  virtual void drawRect(const NSRect& dirty);

 private:
  class Painter;

  /// Gives this view its size, and those inside what follows from it.
  void resize(const NSSize& size);
  /// Marks what the view covers of its superview.
  void mark_superview() const;

  NSRect frame_{};
  unsigned mask_ = 0;
  NSRect dirty_{};  // in the view's own coordinates
  std::weak_ptr<NSView> superview_;
  std::vector<std::shared_ptr<NSView>> subviews_;
};

}  // namespace quoll::platform
