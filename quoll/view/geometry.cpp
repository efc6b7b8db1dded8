#include "quoll/view/geometry.h"

#include <algorithm>
#include <cmath>

namespace quoll::platform {

namespace {

/// The rectangle with these edges.
NSRect between(double left, double top, double right, double bottom) {
  return {{left, top}, {right - left, bottom - top}};
}

double usable_side(double length) {
  return length > 0 ? std::min(length, 2 * kLargestCoordinate) : 0;
}

double usable_place(double place) {
  return std::isnan(place) ? 0 : std::clamp(place, -kLargestCoordinate, kLargestCoordinate);
}

}  // namespace

NSSize usable(const NSSize& size) {
  return {usable_side(size.width), usable_side(size.height)};
}

NSRect usable(const NSRect& rect) {
  return {{usable_place(rect.origin.x), usable_place(rect.origin.y)}, usable(rect.size)};
}

bool is_empty(const NSRect& rect) {
  return rect.size.width <= 0 || rect.size.height <= 0;
}

NSRect intersection(const NSRect& a, const NSRect& b) {
  const double left = std::max(a.origin.x, b.origin.x);
  const double top = std::max(a.origin.y, b.origin.y);
  const double right = std::min(a.origin.x + a.size.width, b.origin.x + b.size.width);
  const double bottom = std::min(a.origin.y + a.size.height, b.origin.y + b.size.height);
  return left < right && top < bottom ? between(left, top, right, bottom) : NSRect{};
}

NSRect union_of(const NSRect& a, const NSRect& b) {
  if (is_empty(a)) {
    return b;
  }
  if (is_empty(b)) {
    return a;
  }
  return between(std::min(a.origin.x, b.origin.x), std::min(a.origin.y, b.origin.y),
                 std::max(a.origin.x + a.size.width, b.origin.x + b.size.width),
                 std::max(a.origin.y + a.size.height, b.origin.y + b.size.height));
}

bool contains(const NSRect& outer, const NSRect& inner) {
  return outer.origin.x <= inner.origin.x && outer.origin.y <= inner.origin.y &&
         inner.origin.x + inner.size.width <= outer.origin.x + outer.size.width &&
         inner.origin.y + inner.size.height <= outer.origin.y + outer.size.height;
}

}  // namespace quoll::platform
