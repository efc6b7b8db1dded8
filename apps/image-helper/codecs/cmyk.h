#pragma once

namespace quoll::image_helper {

/// Converts a CMYK pixel to red, green and blue. All four samples are inverted: the highest value
/// means no ink. The printer's profile is not used.
template <typename Sample>
void rgb_of_cmyk(const Sample (&light)[4], Sample* rgb) {
  constexpr unsigned long kFull = static_cast<Sample>(-1);
  for (int i = 0; i < 3; ++i) {
    rgb[i] =
        static_cast<Sample>((light[i] * static_cast<unsigned long>(light[3]) + kFull / 2) / kFull);
  }
}

}  // namespace quoll::image_helper
