#pragma once

namespace quoll::platform {

/// Lengths and places of views and drawings, in units of the screen (72 an inch on paper).
struct NSPoint {
  double x = 0;
  double y = 0;
  friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

struct NSSize {
  double width = 0;
  double height = 0;
  friend bool operator==(const NSSize&, const NSSize&) = default;
};

/// A rectangle: the corner with the smallest x and y, and the size.
struct NSRect {
  NSPoint origin{};
  NSSize size{};
  friend bool operator==(const NSRect&, const NSRect&) = default;
};

/// No place in a view lies further from its origin, so that sums of places stay exact.
inline constexpr double kLargestCoordinate = 1 << 30;

/// The size with what cannot be worked with taken out: a negative or NaN side is 0, one beyond
/// twice `kLargestCoordinate` (infinity too) is that.
[[nodiscard]] NSSize usable(const NSSize& size);
/// The same for a rectangle: a NaN in the origin is 0, one too far away is `kLargestCoordinate` in
/// that direction. From minus infinity, infinitely large, is so the whole plane.
[[nodiscard]] NSRect usable(const NSRect& rect);

/// True when a side is 0.
[[nodiscard]] bool is_empty(const NSRect& rect);

/// What both have in common; the empty rectangle at the origin when that is nothing.
[[nodiscard]] NSRect intersection(const NSRect& a, const NSRect& b);

/// The smallest rectangle around both; an empty one does not count.
[[nodiscard]] NSRect union_of(const NSRect& a, const NSRect& b);

/// True when no part of `inner` lies outside `outer`.
[[nodiscard]] bool contains(const NSRect& outer, const NSRect& inner);

}  // namespace quoll::platform
