#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>

#include "tests/image_helper/sample_files.h"

namespace quoll::test {

using foundation::Bytes;

namespace {

constexpr std::uint32_t kTile = 32;
constexpr std::uint32_t kStrip = 7;

void set_tags(TIFF* tiff, const SampleImage& image, const TiffOptions& options) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, image.bits);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, options.orientation);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
               options.planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  const unsigned photometric =
      options.photometric.value_or(image.channels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, options.compression);
  if (options.predictor) {
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  }
  const unsigned colours = photometric == PHOTOMETRIC_SEPARATED ? 4
                           : photometric == PHOTOMETRIC_RGB     ? 3
                                                                : 1;
  if (image.channels > colours) {
    const auto kind = static_cast<std::uint16_t>(options.extra_kind);
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
  if (photometric == PHOTOMETRIC_PALETTE) {
    std::vector<std::uint16_t> maps[3];
    for (unsigned i = 0; i < 1u << image.bits; ++i) {
      std::uint16_t rgb[3];
      palette_colour(i, rgb);
      for (unsigned c = 0; c < 3; ++c) {
        maps[c].push_back(static_cast<std::uint16_t>(rgb[c] * 257));
      }
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
  }
  if (!image.profile.empty()) {
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(image.profile.size()),
                 image.profile.data());
  }
}

/// The samples of a block, in the machine's order or packed below 8 bits; outside they are 0.
Bytes block(const SampleImage& image, std::uint32_t left, std::uint32_t top, std::uint32_t width,
            std::uint32_t height, int plane) {
  Bytes bytes;
  for (std::uint32_t y = top; y < top + height; ++y) {
    unsigned pending = 0, held = 0;
    for (std::uint32_t x = left; x < left + width; ++x) {
      const bool inside = x < image.width && y < image.height;
      for (unsigned c = 0; c < image.channels; ++c) {
        if (plane >= 0 && static_cast<unsigned>(plane) != c) {
          continue;
        }
        const std::uint16_t sample = inside ? image.at(x, y)[c] : std::uint16_t{0};
        if (image.bits == 16) {
          const auto* const raw = reinterpret_cast<const unsigned char*>(&sample);
          bytes.insert(bytes.end(), raw, raw + 2);
          continue;
        }
        pending = pending << image.bits | sample;
        held += image.bits;
        if (held == 8) {
          bytes.push_back(static_cast<unsigned char>(pending));
          pending = held = 0;
        }
      }
    }
    if (held != 0) {
      bytes.push_back(static_cast<unsigned char>(pending << (8 - held)));
    }
  }
  return bytes;
}

void write_pixels(TIFF* tiff, const SampleImage& image, const TiffOptions& options) {
  const int planes = options.planes ? static_cast<int>(image.channels) : 1;
  const std::uint32_t width = options.tiled ? kTile : image.width;
  const std::uint32_t height = options.tiled ? kTile : kStrip;
  for (int plane = 0; plane < planes; ++plane) {
    for (std::uint32_t y = 0; y < image.height; y += height) {
      const std::uint32_t rows = options.tiled ? height : std::min(height, image.height - y);
      for (std::uint32_t x = 0; x < image.width; x += width) {
        Bytes bytes = block(image, x, y, width, rows, options.planes ? plane : -1);
        const auto length = static_cast<tmsize_t>(bytes.size());
        const auto sample = static_cast<std::uint16_t>(plane);
        const tmsize_t written =
            options.tiled ? TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, sample),
                                                 bytes.data(), length)
                          : TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y, sample),
                                                  bytes.data(), length);
        EXPECT_EQ(written, length);
      }
    }
  }
}

}  // namespace

Bytes tiff_file(const SampleImage& image, const TiffOptions& options) {
  const int memory = memfd_create("sample", MFD_CLOEXEC);
  TIFF* const tiff = TIFFFdOpen(dup(memory), "sample", options.mode);
  set_tags(tiff, image, options);
  if (options.tiled) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kTile);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, kTile);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kStrip);
  }
  write_pixels(tiff, image, options);
  TIFFClose(tiff);
  struct stat status = {};
  fstat(memory, &status);
  Bytes file(static_cast<std::size_t>(status.st_size));
  EXPECT_EQ(pread(memory, file.data(), file.size(), 0), status.st_size);
  close(memory);
  return file;
}

}  // namespace quoll::test
