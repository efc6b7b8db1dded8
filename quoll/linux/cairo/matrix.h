#pragma once

#include <cairo.h>

#include <algorithm>
#include <cmath>

namespace quoll::cairo_drawing {

/// The length of a unit after the transform: roughly, and at most.
inline double longest_unit(const cairo_matrix_t& matrix) {
  return std::max(
      {std::abs(matrix.xx), std::abs(matrix.xy), std::abs(matrix.yx), std::abs(matrix.yy)});
}

/// Whether a drawing through this transform can be seen, and the transform be inverted.
inline bool is_usable(const cairo_matrix_t& matrix) {
  constexpr double kSmallestArea = 1e-6;  // of a transformed unit square
  constexpr double kLongestUnit = 1e6;
  const double area = std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx);
  return area >= kSmallestArea && longest_unit(matrix) <= kLongestUnit &&
         std::isfinite(matrix.x0) && std::isfinite(matrix.y0);
}

}  // namespace quoll::cairo_drawing
