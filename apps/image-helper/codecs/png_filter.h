#pragma once

#include <cstddef>

namespace quoll::image_helper {

/// Applies PNG's Paeth filter to a row: writes to `out` the difference of each byte from the
/// neighbour (left, above, or above left) that predicts it best. `above` is the row before, all
/// zero for the first row. `pixel` is the number of bytes of a pixel, at most `length`.
///
/// Of PNG's single filters this one comes nearest to choosing the best filter for each row, for
/// photos and for screenshots.
void filter_row(const unsigned char* row, const unsigned char* above, std::size_t length,
                std::size_t pixel, unsigned char* out);

}  // namespace quoll::image_helper
