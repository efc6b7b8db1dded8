#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "quoll/foundation/value.h"

namespace quoll::test {

/// Pixels to make files of, and what a reference reader finds in a file.
struct SampleImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned channels = 3;  ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
  unsigned bits = 8;
  std::vector<std::uint16_t> samples;
  foundation::Bytes profile;

  [[nodiscard]] const std::uint16_t* at(std::uint32_t x, std::uint32_t y) const {
    return samples.data() + (std::size_t{y} * width + x) * channels;
  }
  friend bool operator==(const SampleImage&, const SampleImage&) = default;
};

/// Smooth waves with noise in them, so that neighbours differ in every bit; the same at every call.
SampleImage sample_image(std::uint32_t width, std::uint32_t height, unsigned channels,
                         unsigned bits);

/// A colour profile for that many channels, which holds no more than readers check; 0 makes one of
/// a printer's inks.
foundation::Bytes sample_profile(unsigned channels, std::size_t length = 400);

/// EXIF data with nothing in it but an orientation.
foundation::Bytes sample_exif(unsigned orientation, bool big_endian);

/// The image as a viewer shows it, in the plainest way: pixel by pixel.
SampleImage turned(const SampleImage& stored, unsigned orientation);

/// A failure's words, short enough to read: which pixel differs, not all of them.
std::string difference(const SampleImage& is, const SampleImage& should_be);

// Reference readers: each by its library alone, in its simplest way. They fail the test and give an
// empty image when the file is not one.
SampleImage read_png(const foundation::Bytes& file);
SampleImage read_tiff(const foundation::Bytes& file);
SampleImage read_jpeg(const foundation::Bytes& file);

}  // namespace quoll::test
