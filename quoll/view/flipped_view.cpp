#include "quoll/view/flipped_view.h"

#include <utility>

#include "quoll/platform/notifications.h"

namespace quoll {

FlippedView::FlippedView(const platform::NSRect& frame, DrawingBlock block)
    : NSView(frame), drawingBlock(std::move(block)) {
  setAutoresizingMask(platform::NSViewWidthSizable | platform::NSViewHeightSizable);
}

FlippedView::~FlippedView() {
  // The block goes first: what it owns may still post a notification.
  drawingBlock = nullptr;
  platform::NSNotificationCenter::defaultCenter()->removeObserver(this);
}

std::shared_ptr<FlippedView> FlippedView::initWithFrame(const platform::NSRect& frame) {
  return initWithFrame(frame, nullptr);
}

std::shared_ptr<FlippedView> FlippedView::initWithFrame(const platform::NSRect& frame,
                                                        DrawingBlock drawingblock) {
  return std::shared_ptr<FlippedView>(new FlippedView(frame, std::move(drawingblock)));
}

void FlippedView::drawRect(const platform::NSRect& dirty) {
  // Read once: another thread may clear the block at any moment.
  const DrawingBlock block = drawingBlock();
  if (block) {
    const std::weak_ptr<NSView> self = weak_from_this();
    const auto view = std::static_pointer_cast<FlippedView>(self.lock());
    block(view, dirty);  // may release the view: use no member after this
  }
}

}  // namespace quoll
