#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
// jpeglib.h uses FILE and size_t without saying so.
#include <jpeglib.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/image_helper/sample_image.h"

namespace quoll::test {

SampleImage read_png(const foundation::Bytes& file) {
  struct Cursor {
    const foundation::Bytes& file;
    std::size_t offset = 0;
  } cursor{file};
  SampleImage image;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png)) != 0) {
    png_destroy_read_struct(&png, &info, nullptr);
    ADD_FAILURE() << "not a PNG file";
    return {};
  }
  png_set_read_fn(png, &cursor, [](png_structp self, png_bytep out, std::size_t length) {
    auto& from = *static_cast<Cursor*>(png_get_io_ptr(self));
    if (length > from.file.size() - from.offset) {
      png_error(self, "too short");
    }
    std::memcpy(out, from.file.data() + from.offset, length);
    from.offset += length;
  });
  png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  image.width = png_get_image_width(png, info);
  image.height = png_get_image_height(png, info);
  image.channels = png_get_channels(png, info);
  image.bits = png_get_bit_depth(png, info);
  EXPECT_FALSE(png_get_valid(png, info, PNG_INFO_eXIf)) << "the result names an orientation";
  png_charp name = nullptr;
  png_bytep profile = nullptr;
  png_uint_32 length = 0;
  int method = 0;
  if (png_get_iCCP(png, info, &name, &method, &profile, &length) != 0) {
    image.profile.assign(profile, profile + length);
  }
  png_bytepp rows = png_get_rows(png, info);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::size_t i = 0; i < std::size_t{image.width} * image.channels; ++i) {
      image.samples.push_back(static_cast<std::uint16_t>(
          image.bits == 16 ? rows[y][2 * i] << 8 | rows[y][2 * i + 1] : rows[y][i]));
    }
  }
  png_destroy_read_struct(&png, &info, nullptr);
  return image;
}

SampleImage read_tiff(const foundation::Bytes& file) {
  const int memory = memfd_create("reference", MFD_CLOEXEC);
  EXPECT_EQ(write(memory, file.data(), file.size()), static_cast<ssize_t>(file.size()));
  lseek(memory, 0, SEEK_SET);
  TIFF* const tiff = TIFFFdOpen(memory, "reference", "r");
  if (tiff == nullptr) {
    close(memory);
    ADD_FAILURE() << "not a TIFF file";
    return {};
  }
  SampleImage image;
  std::uint16_t channels = 0, bits = 0, orientation = 0, extra = 0;
  std::uint16_t* kinds = nullptr;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &image.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &image.height);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);
  EXPECT_EQ(orientation, 1);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extra, &kinds);
  EXPECT_EQ(extra, channels % 2 == 0 ? 1 : 0);
  EXPECT_TRUE(extra == 0 || kinds[0] == EXTRASAMPLE_UNASSALPHA);
  image.channels = channels;
  image.bits = bits;
  std::uint32_t length = 0;
  void* profile = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &length, &profile) != 0) {
    image.profile.assign(static_cast<unsigned char*>(profile),
                         static_cast<unsigned char*>(profile) + length);
  }
  std::vector<std::uint16_t> row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
  for (std::uint32_t y = 0; y < image.height; ++y) {
    EXPECT_EQ(TIFFReadScanline(tiff, row.data(), y, 0), 1);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(row.data());
    for (std::size_t i = 0; i < std::size_t{image.width} * channels; ++i) {
      image.samples.push_back(bits == 16 ? row[i] : bytes[i]);
    }
  }
  TIFFClose(tiff);
  return image;
}

SampleImage read_jpeg(const foundation::Bytes& file) {
  jpeg_decompress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, file.data(), file.size());
  jpeg_read_header(&jpeg, TRUE);
  jpeg_start_decompress(&jpeg);
  // Four channels here are inks, as the file holds them.
  SampleImage image{jpeg.output_width,
                    jpeg.output_height,
                    static_cast<unsigned>(jpeg.output_components),
                    8,
                    {},
                    {}};
  std::vector<JSAMPLE> row(std::size_t{image.width} * image.channels);
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW line = row.data();
    jpeg_read_scanlines(&jpeg, &line, 1);
    image.samples.insert(image.samples.end(), row.begin(), row.end());
  }
  jpeg_finish_decompress(&jpeg);
  jpeg_destroy_decompress(&jpeg);
  return image;
}

}  // namespace quoll::test
