#pragma once

#include <memory>
#include <vector>

#include "quoll/view/drawing_context.h"
#include "quoll/view/geometry.h"

namespace quoll::platform {

/// `NSAutoresizingMaskOptions`: bits of an autoresizing mask, with the platform's numbers. A set
/// bit makes that side of the view follow its superview's.
enum NSAutoresizingMaskOptions : unsigned {
  NSViewNotSizable = 0,
  NSViewWidthSizable = 2,
  NSViewHeightSizable = 16,
};

[[nodiscard]] constexpr NSAutoresizingMaskOptions operator|(NSAutoresizingMaskOptions one,
                                                            NSAutoresizingMaskOptions other) {
  return static_cast<NSAutoresizingMaskOptions>(static_cast<unsigned>(one) |
                                                static_cast<unsigned>(other));
}

/// `NSView`: a rectangle that draws itself, with other views in it. Views are held by
/// `std::shared_ptr`: a view owns its subviews and refers weakly to its superview. A whole tree
/// belongs to one thread.
///
/// Each view has coordinates of its own. In a flipped view the origin is at the top left and y
/// grows downwards; in any other it is at the bottom left and y grows upwards. The frames of
/// subviews are in these coordinates. Numbers that cannot be used are changed as `usable` says.
/// Trees may be deep: no operation recurses.
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

  /// `isFlipped`: whether y grows downwards in this view. The answer must never change.
  [[nodiscard]] virtual bool isFlipped() const { return false; }

  /// The view's rectangle in its superview's coordinates.
  [[nodiscard]] NSRect frame() const { return frame_; }
  void setFrame(const NSRect& frame);
  /// `setFrameSize:`: the origin stays. A subview whose mask has the bit of a side grows or shrinks
  /// by the same amount, and so do its own subviews; no side becomes smaller than 0. Their origins
  /// stay too.
  void setFrameSize(const NSSize& size);
  /// The view's rectangle in its own coordinates: `frame` with the origin at 0.
  [[nodiscard]] NSRect bounds() const { return {{}, frame_.size}; }

  /// Which sides of the view follow its superview: bits joined with `|`, none at first. Other bits
  /// are kept and have no effect.
  [[nodiscard]] NSAutoresizingMaskOptions autoresizingMask() const { return mask_; }
  void setAutoresizingMask(NSAutoresizingMaskOptions mask) { mask_ = mask; }

  /// The view that this one is in; null when it is in none.
  [[nodiscard]] std::shared_ptr<NSView> superview() const { return superview_.lock(); }
  /// The views inside this one, from back to front.
  [[nodiscard]] std::vector<std::shared_ptr<NSView>> subviews() const { return subviews_; }
  /// `addSubview:`: adds a view in front of the other subviews; it leaves the superview that it
  /// had. Raises `NSInvalidArgumentException` for null, for this view itself, and for a view that
  /// this one is inside of.
  void addSubview(std::shared_ptr<NSView> view);
  /// Takes the view out of its superview. Does nothing when it has none.
  void removeFromSuperview();

  /// Whether a part of the view is marked to be drawn again. A new view is marked as a whole.
  [[nodiscard]] bool needsDisplay() const { return !is_empty(dirty_); }
  /// `setNeedsDisplay:`: marks the whole view to be drawn again, or takes all marks away.
  void setNeedsDisplay(bool needed);
  /// `setNeedsDisplayInRect:`: marks this part too. It is marked in all views around this one as
  /// well, because what is behind a view shows through it.
  void setNeedsDisplayInRect(const NSRect& rect);

  /// Draws the view and its subviews into the context. The view's upper left corner comes to the
  /// context's origin.
  void display(NSGraphicsContext& context);
  /// Draws a part of the view only, extended to whole pixels; nothing outside of it is touched.
  /// Views are drawn from back to front. Each is clipped to its own rectangle and to those around
  /// it, and is skipped when nothing of it lies in the part. If the part contains all that is
  /// marked, the marks are taken away. An exception from a view's drawing reaches the caller; the
  /// part is then marked again, also in the view that raised.
  void displayRect(const NSRect& rect, NSGraphicsContext& context);
  /// `displayIfNeeded`: draws the part that is marked.
  void displayIfNeeded(NSGraphicsContext& context);

  /// `drawRect:`: draws the part `dirty` of the view, in the view's own coordinates, into the
  /// current context. It is called while the view is displayed. The base class draws nothing.
  virtual void drawRect(const NSRect& dirty);

 private:
  class Painter;

  /// Sets the size of this view and adjusts the subviews that follow it.
  [[gnu::visibility("hidden")]] void resize(const NSSize& size);
  /// Marks the part of the superview that this view covers.
  [[gnu::visibility("hidden")]] void mark_superview() const;

  NSRect frame_{};
  NSAutoresizingMaskOptions mask_ = NSViewNotSizable;
  NSRect dirty_{};  // in the view's own coordinates
  std::weak_ptr<NSView> superview_;
  std::vector<std::shared_ptr<NSView>> subviews_;
};

}  // namespace quoll::platform
