#include "apps/image-helper/codecs/png_filter.h"

namespace quoll::image_helper {

void filter_row(const unsigned char* row, const unsigned char* above, std::size_t length,
                std::size_t pixel, unsigned char* __restrict out) {
  // The first pixel has no left neighbour: it is predicted by the one above.
  for (std::size_t i = 0; i < pixel; ++i) {
    out[i] = static_cast<unsigned char>(row[i] - above[i]);
  }
  // 16-bit numbers and no branches, so that the compiler can use vector instructions.
  for (std::size_t i = pixel; i < length; ++i) {
    const short left = row[i - pixel];
    const short up = above[i];
    const short corner = above[i - pixel];
    const short a = static_cast<short>(up - corner);
    const short b = static_cast<short>(left - corner);
    const short c = static_cast<short>(a + b);
    const short to_left = static_cast<short>(a < 0 ? -a : a);
    const short to_up = static_cast<short>(b < 0 ? -b : b);
    const short to_corner = static_cast<short>(c < 0 ? -c : c);
    const short second = to_up <= to_corner ? up : corner;
    const short best = to_left <= to_up && to_left <= to_corner ? left : second;
    out[i] = static_cast<unsigned char>(row[i] - best);
  }
}

}  // namespace quoll::image_helper
