#pragma once

#include <cstddef>

namespace quoll::image_helper {

/// PNG's Paeth filter, of all filters the one that comes nearest to trying each of them on each
/// row, on photos and on screenshots: writes to `out` how each byte of `row` differs from the
/// neighbour that predicts it best: left, above, or above left. `above` is the row before, zeros
/// for the first; `pixel` is the number of bytes of a pixel, at most `length`.
void filter_row(const unsigned char* row, const unsigned char* above, std::size_t length,
                std::size_t pixel, unsigned char* out);

}  // namespace quoll::image_helper
