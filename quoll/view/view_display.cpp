#include <utility>

#include "quoll/view/view.h"
#include "quoll/view/view_placement.h"

namespace quoll::platform {

/// Draws a view and all views inside it, from back to front, without recursion.
class NSView::Painter {
 public:
  Painter(NSView& top, const NSRect& part, NSGraphicsContext& context)
      : top_(top), part_(part), all_(contains(part, top.dirty_)), context_(context) {}
  Painter(const Painter&) = delete;
  Painter& operator=(const Painter&) = delete;
  ~Painter() {
    if (!done_) {
      top_.setNeedsDisplayInRect(part_);
    }
    if (!done_ && visit_.view) {
      visit_.view->setNeedsDisplayInRect(visit_.place.inwards(visit_.visible));
    }
  }

  void paint() {
    const Placement place = placement_of(top_.bounds(), top_.isFlipped(), context_.isFlipped());
    waiting_.push_back(
        {top_.shared_from_this(), place, context_.pixel_aligned(place.outwards(part_))});
    while (!waiting_.empty()) {
      visit_ = std::move(waiting_.back());
      waiting_.pop_back();
      draw(visit_);
      add_subviews(visit_);
    }
    done_ = true;
  }

 private:
  /// A view that is still to be drawn, with its place and its visible part in the context's
  /// coordinates.
  struct Visit {
    std::shared_ptr<NSView> view;
    Placement place;
    NSRect visible;
  };

  void draw(const Visit& visit) {
    if (all_) {
      // Cleared before the drawing, so that what the drawing itself marks stays marked.
      visit.view->dirty_ = {};
    }
    const SavedGraphicsState state(context_);
    context_.translate(visit.place.x, visit.place.y);
    if (visit.place.turned) {
      context_.flip();
    }
    const NSRect own = visit.place.inwards(visit.visible);
    context_.clip(own);
    visit.view->drawRect(own);
  }

  /// In reverse order: the view that is added last is drawn next.
  void add_subviews(const Visit& visit) {
    const NSView& view = *visit.view;
    for (auto subview = view.subviews_.rbegin(); subview != view.subviews_.rend(); ++subview) {
      const Placement place = visit.place.of(
          placement_of((*subview)->frame_, (*subview)->isFlipped(), view.isFlipped()));
      const NSRect visible = intersection(visit.visible, place.outwards((*subview)->bounds()));
      if (!is_empty(visible)) {
        waiting_.push_back({*subview, place, visible});
      }
    }
  }

  NSView& top_;
  const NSRect part_;
  const bool all_;
  NSGraphicsContext& context_;
  std::vector<Visit> waiting_;
  Visit visit_;  // the view that is being drawn
  bool done_ = false;
};

void NSView::display(NSGraphicsContext& context) {
  displayRect(bounds(), context);
}

void NSView::displayRect(const NSRect& rect, NSGraphicsContext& context) {
  const NSRect part = intersection(usable(rect), bounds());
  if (!is_empty(part)) {
    const auto self = shared_from_this();  // the drawing may release every other reference
    const ScopedGraphicsContext current(context);
    Painter(*this, part, context).paint();
  }
}

void NSView::displayIfNeeded(NSGraphicsContext& context) {
  displayRect(dirty_, context);
}

}  // namespace quoll::platform
