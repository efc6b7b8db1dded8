#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quoll/foundation/property.h"
#include "quoll/view/view.h"

namespace quoll {

/// `FlippedView`: a view that a block paints, so that nobody has to derive a class. Its origin is
/// at the top left and y grows downwards. It follows its superview's size in both directions.
///
/// The two properties are atomic and may be set from any thread; everything else belongs to the
/// thread of the view's tree.
///
///     const auto view = FlippedView::initWithFrame(
///         {{0, 0}, {200, 100}}, [](const auto& self, const platform::NSRect& dirty) {
///           platform::NSGraphicsContext::currentContext()->fill_rect(self->bounds(), {.red = 1});
///         });
class FlippedView final : public platform::NSView {
 public:
  /// Paints the view inside `dirty`, in the view's own coordinates, into the current context. What
  /// it throws passes through. Each draw runs a copy of the block, so it may replace or drop
  /// itself; what it keeps for the next time stands outside of it.
  using DrawingBlock =
      std::function<void(const std::shared_ptr<FlippedView>& view, const platform::NSRect& dirty)>;

  /// `initWithFrame:`: never null.
  [[nodiscard]] static std::shared_ptr<FlippedView> initWithFrame(const platform::NSRect& frame);
  /// `initWithFrame:drawingblock:`: the block may be null. Never null itself.
  [[nodiscard]] static std::shared_ptr<FlippedView> initWithFrame(const platform::NSRect& frame,
                                                                  DrawingBlock drawingblock);
  FlippedView(const FlippedView&) = delete;
  FlippedView& operator=(const FlippedView&) = delete;
  /// Drops the block, then takes the view out of the default notification center.
  ~FlippedView() override;

  [[nodiscard]] bool isFlipped() const override { return true; }

  /// `Refresh`: does nothing. Owners redraw by `setNeedsDisplay`.
  void Refresh() {}

  /// Calls the block with this view, which stays alive meanwhile, and `dirty` as it is. Without a
  /// block it draws nothing.
  void drawRect(const platform::NSRect& dirty) override;

  /// For the owner; the view never reads it.
  foundation::Property<std::optional<std::string>> viewId;
  foundation::Property<DrawingBlock> drawingBlock;

 private:
  FlippedView(const platform::NSRect& frame, DrawingBlock block);
};

}  // namespace quoll
