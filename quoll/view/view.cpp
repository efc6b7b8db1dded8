#include "quoll/view/view.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "quoll/foundation/exception.h"
#include "quoll/view/view_placement.h"

namespace quoll::platform {

NSView::NSView(const NSRect& frame) : frame_(usable(frame)), dirty_(bounds()) {}

NSView::~NSView() {
  // A deep tree must not be destroyed by nested calls. So the outermost destructor of this thread
  // releases all views; inner destructors only hand their subviews to it.
  thread_local std::vector<std::shared_ptr<NSView>>* left = nullptr;
  if (left != nullptr) {
    std::move(subviews_.begin(), subviews_.end(), std::back_inserter(*left));
    return;
  }
  left = &subviews_;
  while (!subviews_.empty()) {
    const auto next = std::move(subviews_.back());
    subviews_.pop_back();
  }
  left = nullptr;
}

void NSView::setFrame(const NSRect& frame) {
  mark_superview();
  frame_.origin = usable(frame).origin;
  resize(frame.size);
  mark_superview();
}

void NSView::setFrameSize(const NSSize& size) {
  setFrame({frame_.origin, size});
}

void NSView::resize(const NSSize& size) {
  std::vector<std::pair<NSView*, NSSize>> waiting{{this, size}};
  while (!waiting.empty()) {
    const auto [view, wanted] = waiting.back();
    waiting.pop_back();
    const NSSize before = view->frame_.size;
    const NSSize after = view->frame_.size = usable(wanted);
    view->dirty_ = view->bounds();
    for (const auto& subview : view->subviews_) {
      NSSize follows = subview->frame_.size;
      if ((subview->mask_ & NSViewWidthSizable) != 0) {
        follows.width += after.width - before.width;
      }
      if ((subview->mask_ & NSViewHeightSizable) != 0) {
        follows.height += after.height - before.height;
      }
      if (follows != subview->frame_.size) {
        waiting.emplace_back(subview.get(), follows);
      }
    }
  }
}

void NSView::addSubview(std::shared_ptr<NSView> view) {
  if (!view) {
    foundation::raise_invalid_argument("addSubview: the view is null");
  }
  for (std::shared_ptr<const NSView> around = shared_from_this(); around;
       around = around->superview()) {
    if (around == view) {
      foundation::raise_invalid_argument("addSubview: a view cannot be in itself");
    }
  }
  view->removeFromSuperview();
  view->superview_ = weak_from_this();
  subviews_.push_back(std::move(view));
  subviews_.back()->setNeedsDisplay(true);
}

void NSView::removeFromSuperview() {
  const auto around = superview();
  if (!around) {
    return;
  }
  mark_superview();
  superview_.reset();
  const auto place =
      std::find_if(around->subviews_.begin(), around->subviews_.end(),
                   [this](const std::shared_ptr<NSView>& view) { return view.get() == this; });
  const auto self = std::move(*place);  // may be the last reference: use no member after this
  around->subviews_.erase(place);
}

void NSView::setNeedsDisplay(bool needed) {
  dirty_ = {};
  if (needed) {
    setNeedsDisplayInRect(bounds());
  }
}

void NSView::setNeedsDisplayInRect(const NSRect& rect) {
  NSRect part = intersection(usable(rect), bounds());
  NSView* view = this;
  std::shared_ptr<NSView> around;
  while (!is_empty(part)) {
    view->dirty_ = union_of(view->dirty_, part);
    around = view->superview();
    if (!around) {
      return;
    }
    const Placement place = placement_of(view->frame_, view->isFlipped(), around->isFlipped());
    part = intersection(place.outwards(part), around->bounds());
    view = around.get();
  }
}

void NSView::mark_superview() const {
  if (const auto around = superview()) {
    around->setNeedsDisplayInRect(frame_);
  }
}

void NSView::drawRect(const NSRect& /*dirty*/) {}

}  // namespace quoll::platform
