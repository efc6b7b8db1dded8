#pragma once

namespace quoll::platform {

/// A point. Views and drawings measure in units of the screen; a page has 72 of them in an inch.
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

/// A rectangle: its corner with the smallest x and y, and its size.
struct NSRect {
  NSPoint origin{};
  NSSize size{};
  friend bool operator==(const NSRect&, const NSRect&) = default;
};

/// The largest coordinate that is used. Coordinates stay within it, so that their sums are exact.
inline constexpr double kLargestCoordinate = 1 << 30;

/// The size, made usable: a negative or NaN side becomes 0, and a side longer than twice
/// `kLargestCoordinate` becomes that.
[[nodiscard]] NSSize usable(const NSSize& size);
/// The rectangle, made usable: its size as above, a NaN in its origin becomes 0, and a coordinate
/// beyond `kLargestCoordinate` becomes that, with its sign. So a rectangle from minus infinity and
/// of infinite size becomes the whole plane.
[[nodiscard]] NSRect usable(const NSRect& rect);

/// True when a side is 0 or negative.
[[nodiscard]] bool is_empty(const NSRect& rect);

/// The part that both have in common; the empty rectangle at the origin when there is none.
[[nodiscard]] NSRect intersection(const NSRect& a, const NSRect& b);

/// The smallest rectangle around both. An empty one is ignored.
[[nodiscard]] NSRect union_of(const NSRect& a, const NSRect& b);

/// True when `inner` lies inside `outer`.
[[nodiscard]] bool contains(const NSRect& outer, const NSRect& inner);

}  // namespace quoll::platform
