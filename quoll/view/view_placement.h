#pragma once

#include "quoll/view/geometry.h"

namespace quoll::platform {

/// The place of a view's coordinates in those of a view around it, or of the context: moved, and
/// turned over when y grows the other way.
struct Placement {
  double x = 0;  ///< the place of the view's origin
  double y = 0;
  bool turned = false;

  /// Converts a rectangle of the view to the coordinates outside.
  [[nodiscard]] NSRect outwards(const NSRect& own) const {
    return {{x + own.origin.x, turned ? y - own.origin.y - own.size.height : y + own.origin.y},
            own.size};
  }
  /// Converts a rectangle outside to the coordinates of the view.
  [[nodiscard]] NSRect inwards(const NSRect& outer) const {
    return {
        {outer.origin.x - x, turned ? y - outer.origin.y - outer.size.height : outer.origin.y - y},
        outer.size};
  }
  /// The place, in the coordinates outside, of a view that lies at `inner` in this view.
  [[nodiscard]] Placement of(const Placement& inner) const {
    return {x + inner.x, turned ? y - inner.y : y + inner.y, turned != inner.turned};
  }
};

/// The place of a view with this frame in its superview.
inline Placement placement_of(const NSRect& frame, bool flipped, bool superview_flipped) {
  const bool turned = flipped != superview_flipped;
  return {frame.origin.x, turned ? frame.origin.y + frame.size.height : frame.origin.y, turned};
}

}  // namespace quoll::platform
