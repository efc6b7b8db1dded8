#pragma once

#include <cairo.h>

#include <algorithm>
#include <cmath>

namespace quoll::cairo_drawing {

/// How long a unit becomes at most, roughly.
inline double longest_unit(const cairo_matrix_t& matrix) {
  return std::max(
      {std::abs(matrix.xx), std::abs(matrix.xy), std::abs(matrix.yx), std::abs(matrix.yy)});
}

/// Whether what is drawn through it can be seen at all, and the way back be found.
inline bool is_usable(const cairo_matrix_t& matrix) {
  constexpr double kSmallestArea = 1e-6;  // that a unit square becomes
  constexpr double kLongestUnit = 1e6;
  const double area = std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx);
  return area >= kSmallestArea && longest_unit(matrix) <= kLongestUnit &&
         std::isfinite(matrix.x0) && std::isfinite(matrix.y0);
}

}  // namespace quoll::cairo_drawing
