#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quoll/foundation/property.h"
#include "quoll/view/view.h"

namespace quoll {

/// `FlippedView`: a view that is painted by a block, so that no class has to be derived. Its origin
/// is at the top left, and y grows downwards. Its width and height follow those of its superview.
///
/// The two properties are atomic and may be set from any thread. Everything else belongs to the
/// thread of the view's tree.
///
///     const auto view = FlippedView::initWithFrame(
///         {{0, 0}, {200, 100}}, [](const auto& self, const platform::NSRect& dirty) {
///           platform::NSGraphicsContext::currentContext()->fill_rect(self->bounds(), {.red = 1});
///         });
class FlippedView final : public platform::NSView {
 public:
  /// Paints the part `dirty` of the view, in the view's own coordinates, into the current context.
  /// What it throws reaches the caller of `display`. Each drawing runs a copy of the block: so the
  /// block may replace or clear itself, but what it changes in its captured copies is lost.
  using DrawingBlock =
      std::function<void(const std::shared_ptr<FlippedView>& view, const platform::NSRect& dirty)>;

  /// `initWithFrame:`: a view without a block; never null.
  [[nodiscard]] static std::shared_ptr<FlippedView> initWithFrame(const platform::NSRect& frame);
  /// `initWithFrame:drawingblock:`: a view with this block, which may be null; the view is never
  /// null.
  [[nodiscard]] static std::shared_ptr<FlippedView> initWithFrame(const platform::NSRect& frame,
                                                                  DrawingBlock drawingblock);
  FlippedView(const FlippedView&) = delete;
  FlippedView& operator=(const FlippedView&) = delete;
  /// Releases the block, then removes the view from the default notification center.
  ~FlippedView() override;

  [[nodiscard]] bool isFlipped() const override { return true; }

  /// `Refresh`: does nothing. To have the view drawn again, call `setNeedsDisplay`.
  void Refresh() {}

  /// Calls the block with this view and `dirty`, unchanged, and keeps the view alive meanwhile.
  /// Without a block it draws nothing.
  void drawRect(const platform::NSRect& dirty) override;

  /// A name for the owner's use. The view never reads it.
  foundation::Property<std::optional<std::string>> viewId;
  foundation::Property<DrawingBlock> drawingBlock;

 private:
  [[gnu::visibility("hidden")]] FlippedView(const platform::NSRect& frame, DrawingBlock block);
};

}  // namespace quoll
