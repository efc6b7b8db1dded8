#include <png.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "apps/image-helper/codecs/deflate.h"
#include "apps/image-helper/codecs/guard.h"
#include "apps/image-helper/codecs/png_filter.h"
#include "apps/image-helper/codecs/writers.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::image_helper {

namespace {

/// Writes a PNG. libpng writes the chunks. The pixels are filtered and compressed here, because
/// that takes most of the time.
class PngWriter {
 public:
  explicit PngWriter(int descriptor) : descriptor_(descriptor) {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &guard_, on_error, on_warning);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    if (info_ == nullptr) {
      png_destroy_write_struct(&png_, nullptr);
      throw std::bad_alloc();
    }
    png_set_write_fn(png_, this, write_bytes, [](png_structp) {});
    png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    // libpng leaves out a profile that it does not accept, instead of giving up the picture.
    png_set_benign_errors(png_, 1);
  }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;
  ~PngWriter() { png_destroy_write_struct(&png_, &info_); }

  void begin(const Picture& picture) {
    constexpr int kColourTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA,
                                    PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA};
    guard_.run([&] {
      png_set_IHDR(png_, info_, picture.width, picture.height, static_cast<int>(picture.bits),
                   kColourTypes[picture.channels - 1], PNG_INTERLACE_NONE,
                   PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      set_colours(picture);
      png_write_info(png_, info_);
    });
  }
  void pixels(std::span<const unsigned char> compressed) { chunk("IDAT", compressed); }
  void end() { chunk("IEND", {}); }

 private:
  [[noreturn]] static void on_error(png_structp png, png_const_charp reason) {
    static_cast<Guard*>(png_get_error_ptr(png))->fail(reason);
  }
  static void on_warning(png_structp, png_const_charp) {}

  static void write_bytes(png_structp png, png_bytep bytes, std::size_t length) {
    const int descriptor = static_cast<PngWriter*>(png_get_io_ptr(png))->descriptor_;
    if (!posix::write_all(descriptor, std::span(bytes, length))) {
      png_error(png, std::strerror(errno));
    }
  }

  void set_colours(const Picture& picture) {
    const PngColours& colours = picture.colours;
    if (picture.has_fitting_profile()) {
      png_set_iCCP(png_, info_, "profile", PNG_COMPRESSION_TYPE_BASE, picture.profile.data(),
                   static_cast<png_uint_32>(picture.profile.size()));
    }
    if (colours.srgb_intent) {
      png_set_sRGB(png_, info_, *colours.srgb_intent);
    }
    if (colours.gamma) {
      png_set_gAMA_fixed(png_, info_, *colours.gamma);
    }
    if (colours.primaries) {
      const auto& p = *colours.primaries;
      png_set_cHRM_fixed(png_, info_, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
    }
  }

  void chunk(const char* name, std::span<const unsigned char> data) {
    guard_.run([&] {
      png_write_chunk(png_, reinterpret_cast<png_const_bytep>(name), data.data(), data.size());
    });
  }

  Guard guard_;
  int descriptor_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

void write_png(PictureSource& source, int descriptor) {
  const Picture& picture = source.picture();
  const std::size_t length = picture.row_bytes();
  PngWriter writer(descriptor);
  writer.begin(picture);

  // Rows are compressed in batches. Each row has the number of its filter before it.
  constexpr std::size_t kBatch = std::size_t{1} << 20;
  std::vector<unsigned char> batch((kBatch / (length + 1) + 1) * (length + 1));
  std::vector<unsigned char> row(length);
  std::vector<unsigned char> above(length);
  Deflate deflate(batch.size());
  std::size_t filled = 0;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    source.read(row.data());
    batch[filled] = PNG_FILTER_VALUE_PAETH;
    filter_row(row.data(), above.data(), length, picture.pixel_bytes(), batch.data() + filled + 1);
    filled += length + 1;
    std::swap(row, above);
    const bool last = y + 1 == picture.height;
    if (last || filled == batch.size()) {
      writer.pixels(deflate.add({batch.data(), filled}, last));
      filled = 0;
    }
  }
  writer.end();
}

}  // namespace quoll::image_helper
