#pragma once

namespace quoll::image_helper {

/// Red, green and blue of a CMYK pixel, all four counted as light left over: the highest sample is
/// no ink. The printer's profile is not looked at.
template <typename Sample>
void rgb_of_inks(const Sample (&light)[4], Sample* rgb) {
  constexpr unsigned long kFull = static_cast<Sample>(-1);
  for (int i = 0; i < 3; ++i) {
    rgb[i] =
        static_cast<Sample>((light[i] * static_cast<unsigned long>(light[3]) + kFull / 2) / kFull);
  }
}

}  // namespace quoll::image_helper
