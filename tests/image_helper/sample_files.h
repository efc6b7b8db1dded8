#pragma once

#include <optional>

#include "tests/image_helper/sample_image.h"

namespace quoll::test {

struct PngOptions {
  bool interlaced = false;
  /// A palette of the first channel's values: the image's samples are its indices.
  bool palette = false;
  /// How many entries of the palette have an alpha of their own, or the grey that is transparent.
  std::optional<unsigned> transparent = {};
  foundation::Bytes exif = {};
};
/// Any depth from 1 to 16 bits, as `image.bits` says.
foundation::Bytes png_file(const SampleImage& image, const PngOptions& options = {});
/// The palette that `png_file` writes, as red, green and blue of an index.
void palette_colour(unsigned index, std::uint16_t* rgb);

struct JpegOptions {
  bool progressive = false;
  /// Four channels are inks; these say how they are stored.
  bool adobe = false;
  bool transformed = false;
  foundation::Bytes exif = {};
};
foundation::Bytes jpeg_file(const SampleImage& image, const JpegOptions& options = {});

struct TiffOptions {
  const char* mode = "w";  ///< "wl" and "wb" choose the byte order, "w8" the large form
  unsigned compression = 1;
  bool predictor = false;
  bool tiled = false;
  bool planes = false;
  unsigned orientation = 1;
  std::optional<unsigned> photometric = {};
  unsigned extra_kind =
      2;  ///< what the sample after the colours is: 1 alpha multiplied in, 2 alpha
};
foundation::Bytes tiff_file(const SampleImage& image, const TiffOptions& options = {});

struct GifFrame {
  std::uint32_t left = 0, top = 0, width = 0, height = 0;
  std::vector<unsigned char> indices;
  bool interlaced = false;
  int transparent = -1;
};
/// With a palette of 16 colours, those of `palette_colour`.
foundation::Bytes gif_file(std::uint32_t width, std::uint32_t height,
                           const std::vector<GifFrame>& frames);

/// Lossless, of three or four channels of 8 bits.
foundation::Bytes webp_file(const SampleImage& image);
/// The same with a profile and EXIF data.
foundation::Bytes extended_webp_file(const SampleImage& image, const foundation::Bytes& exif);
struct WebpFrame {
  std::uint32_t left = 0, top = 0;
  SampleImage image;
};
foundation::Bytes animated_webp_file(std::uint32_t width, std::uint32_t height,
                                     const std::vector<WebpFrame>& frames);

}  // namespace quoll::test
