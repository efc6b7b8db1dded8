#pragma once

#include "quoll/view/geometry.h"

namespace quoll::platform {

/// Where the coordinates of a view lie in others, outside of it: moved, and turned over when y
/// grows the other way.
struct Placement {
  double x = 0;  ///< where the view's own origin comes to
  double y = 0;
  bool turned = false;

  /// A rectangle of the view, in the coordinates outside.
  [[nodiscard]] NSRect outwards(const NSRect& own) const {
    return {{x + own.origin.x, turned ? y - own.origin.y - own.size.height : y + own.origin.y},
            own.size};
  }
  /// A rectangle outside, in the coordinates of the view.
  [[nodiscard]] NSRect inwards(const NSRect& outer) const {
    return {
        {outer.origin.x - x, turned ? y - outer.origin.y - outer.size.height : outer.origin.y - y},
        outer.size};
  }
  /// Where something lies outside that lies at `inner` in the view.
  [[nodiscard]] Placement of(const Placement& inner) const {
    return {x + inner.x, turned ? y - inner.y : y + inner.y, turned != inner.turned};
  }
};

/// Of a view that has this frame in a superview.
inline Placement placement_of(const NSRect& frame, bool flipped, bool superview_flipped) {
  const bool turned = flipped != superview_flipped;
  return {frame.origin.x, turned ? frame.origin.y + frame.size.height : frame.origin.y, turned};
}

}  // namespace quoll::platform
