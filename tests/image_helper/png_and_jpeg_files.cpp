#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <cstdlib>
// jpeglib.h uses FILE and size_t without saying so.
#include <jpeglib.h>

#include <string_view>

#include "tests/image_helper/sample_files.h"

namespace quoll::test {

using foundation::Bytes;

namespace {

/// One row as PNG stores it: samples of `bits` bits, the first in the highest bits.
Bytes packed_row(const SampleImage& image, std::uint32_t y) {
  Bytes row((std::size_t{image.width} * image.channels * image.bits + 7) / 8);
  std::size_t bit = 0;
  for (std::size_t i = 0; i < std::size_t{image.width} * image.channels; ++i) {
    const std::uint16_t sample = image.at(0, y)[i];
    for (unsigned b = image.bits; b-- > 0; ++bit) {
      row[bit / 8] |= static_cast<unsigned char>((sample >> b & 1) << (7 - bit % 8));
    }
  }
  return row;
}

void set_palette(png_structp png, png_infop info, unsigned bits, const PngOptions& options) {
  std::vector<png_color> colours(std::size_t{1} << bits);
  Bytes alphas;
  for (unsigned i = 0; i < colours.size(); ++i) {
    std::uint16_t rgb[3];
    palette_colour(i, rgb);
    colours[i] = {static_cast<png_byte>(rgb[0]), static_cast<png_byte>(rgb[1]),
                  static_cast<png_byte>(rgb[2])};
    if (i < options.transparent.value_or(0)) {
      alphas.push_back(static_cast<unsigned char>(i * 3));
    }
  }
  png_set_PLTE(png, info, colours.data(), static_cast<int>(colours.size()));
  if (!alphas.empty()) {
    png_set_tRNS(png, info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
  }
}

}  // namespace

void palette_colour(unsigned index, std::uint16_t* rgb) {
  rgb[0] = static_cast<std::uint16_t>(index * 37 & 0xff);
  rgb[1] = static_cast<std::uint16_t>(index * 101 & 0xff);
  rgb[2] = static_cast<std::uint16_t>(255 - index);
}

Bytes png_file(const SampleImage& image, const PngOptions& options) {
  constexpr int kTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                            PNG_COLOR_TYPE_RGB_ALPHA};
  Bytes file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &file,
      [](png_structp self, png_bytep bytes, std::size_t length) {
        auto& to = *static_cast<Bytes*>(png_get_io_ptr(self));
        to.insert(to.end(), bytes, bytes + length);
      },
      nullptr);
  png_set_IHDR(png, info, image.width, image.height, static_cast<int>(image.bits),
               options.palette ? PNG_COLOR_TYPE_PALETTE : kTypes[image.channels - 1],
               options.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (options.palette) {
    set_palette(png, info, image.bits, options);
  } else if (options.transparent) {
    png_color_16 grey = {};
    grey.gray = static_cast<png_uint_16>(*options.transparent);
    png_set_tRNS(png, info, nullptr, 0, &grey);
  }
  if (!image.profile.empty()) {
    png_set_iCCP(png, info, "sample", 0, image.profile.data(),
                 static_cast<png_uint_32>(image.profile.size()));
  }
  if (!options.exif.empty()) {
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(options.exif.size()),
                   const_cast<png_bytep>(options.exif.data()));
  }
  png_write_info(png, info);
  const int passes = png_set_interlace_handling(png);
  for (int pass = 0; pass < passes; ++pass) {
    for (std::uint32_t y = 0; y < image.height; ++y) {
      png_write_row(png, packed_row(image, y).data());
    }
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file;
}

Bytes jpeg_file(const SampleImage& image, const JpegOptions& options) {
  jpeg_compress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long length = 0;
  jpeg_mem_dest(&jpeg, &bytes, &length);
  jpeg.image_width = image.width;
  jpeg.image_height = image.height;
  jpeg.input_components = static_cast<int>(image.channels);
  jpeg.in_color_space = image.channels == 1   ? JCS_GRAYSCALE
                        : image.channels == 3 ? JCS_RGB
                                              : JCS_CMYK;
  jpeg_set_defaults(&jpeg);
  if (image.channels == 4) {
    jpeg_set_colorspace(&jpeg, options.transformed ? JCS_YCCK : JCS_CMYK);
    jpeg.write_Adobe_marker = options.adobe ? TRUE : FALSE;
  }
  if (options.progressive) {
    jpeg_simple_progression(&jpeg);
  }
  jpeg_start_compress(&jpeg, TRUE);
  if (!options.exif.empty()) {
    Bytes marker{'E', 'x', 'i', 'f', 0, 0};
    marker.insert(marker.end(), options.exif.begin(), options.exif.end());
    jpeg_write_marker(&jpeg, JPEG_APP0 + 1, marker.data(), static_cast<unsigned>(marker.size()));
  }
  if (!image.profile.empty()) {
    jpeg_write_icc_profile(&jpeg, image.profile.data(),
                           static_cast<unsigned>(image.profile.size()));
  }
  for (std::uint32_t y = 0; y < image.height; ++y) {
    Bytes row(image.at(0, y), image.at(0, y) + std::size_t{image.width} * image.channels);
    JSAMPROW line = row.data();
    jpeg_write_scanlines(&jpeg, &line, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  Bytes file(bytes, bytes + length);
  std::free(bytes);
  return file;
}

}  // namespace quoll::test
