#include <png.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "apps/image-helper/codecs/exif.h"
#include "apps/image-helper/codecs/guard.h"
#include "apps/image-helper/codecs/readers.h"

namespace quoll::image_helper {

namespace {

struct PngHandle {
  png_structp png = nullptr;
  png_infop info = nullptr;

  PngHandle() = default;
  PngHandle(const PngHandle&) = delete;
  PngHandle& operator=(const PngHandle&) = delete;
  ~PngHandle() { png_destroy_read_struct(&png, &info, nullptr); }
};

/// The data of the first chunk with this name, wherever it is; empty when there is none.
ByteView chunk(ByteView file, const char* name) {
  constexpr std::size_t kSignature = 8;
  constexpr std::size_t kAround = 12;  // length and name before the data, checksum after it
  for (ByteView rest = file.subspan(kSignature); rest.size() >= kAround;) {
    const std::size_t length = png_get_uint_32(rest.data());
    if (length > rest.size() - kAround) {
      break;
    }
    if (std::memcmp(rest.data() + 4, name, 4) == 0) {
      return rest.subspan(8, length);
    }
    rest = rest.subspan(length + kAround);
  }
  return {};
}

class PngReader final : public PictureSource {
 public:
  explicit PngReader(ByteView file) : rest_(file) {
    handle_.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &guard_, on_error, on_warning);
    handle_.info = handle_.png != nullptr ? png_create_info_struct(handle_.png) : nullptr;
    if (handle_.info == nullptr) {
      throw std::bad_alloc();
    }
    png_set_read_fn(handle_.png, this, read_bytes);
    // A wrong checksum is damage, in any chunk.
    png_set_crc_action(handle_.png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
    guard_.run([this] { png_read_info(handle_.png, handle_.info); });
    check_size(png_get_image_width(handle_.png, handle_.info),
               png_get_image_height(handle_.png, handle_.info));
    guard_.run([this] { ask_for_plain_samples(); });
    read_header();
    picture_.orientation = orientation_of_exif(chunk(file, "eXIf"));
  }

  void read(unsigned char* row) override {
    if (passes_ == 1) {
      guard_.run([&] {
        png_read_row(handle_.png, row, nullptr);
        if (++read_ == picture_.height) {
          png_read_end(handle_.png, nullptr);
        }
      });
      return;
    }
    if (!held_) {
      hold();
    }
    held_->read(row);
  }

 private:
  [[noreturn]] static void on_error(png_structp png, png_const_charp reason) {
    static_cast<Guard*>(png_get_error_ptr(png))->fail(reason);
  }
  static void on_warning(png_structp, png_const_charp) {}

  static void read_bytes(png_structp png, png_bytep out, std::size_t length) {
    auto& self = *static_cast<PngReader*>(png_get_io_ptr(png));
    if (length > self.rest_.size()) {
      png_error(png, "the PNG file ends too early");
    }
    std::copy_n(self.rest_.begin(), length, out);
    self.rest_ = self.rest_.subspan(length);
  }

  /// Asks libpng to convert palettes, greys of a few bits and transparent colours to samples of 8
  /// or 16 bits.
  void ask_for_plain_samples() {
    png_set_expand(handle_.png);
    passes_ = png_set_interlace_handling(handle_.png);
    png_read_update_info(handle_.png, handle_.info);
  }

  void read_header() {
    png_struct* const png = handle_.png;
    png_info* const info = handle_.info;
    picture_.width = png_get_image_width(png, info);
    picture_.height = png_get_image_height(png, info);
    picture_.channels = png_get_channels(png, info);
    picture_.bits = png_get_bit_depth(png, info);
    png_charp name = nullptr;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    int number = 0;
    if (png_get_iCCP(png, info, &name, &number, &profile, &length) != 0) {
      picture_.profile.assign(profile, profile + length);
    } else if (png_get_sRGB(png, info, &number) != 0) {
      picture_.colours.srgb_intent = number;
    } else {
      read_gamma();
    }
  }

  void read_gamma() {
    png_fixed_point gamma = 0;
    if (png_get_gAMA_fixed(handle_.png, handle_.info, &gamma) != 0) {
      picture_.colours.gamma = gamma;
    }
    std::array<std::int32_t, 8> p{};
    if (png_get_cHRM_fixed(handle_.png, handle_.info, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5],
                           &p[6], &p[7]) != 0) {
      picture_.colours.primaries = p;
    }
  }

  void hold() {
    held_.emplace(picture_);
    guard_.run([this] {
      for (int pass = 0; pass < passes_; ++pass) {
        for (std::uint32_t y = 0; y < picture_.height; ++y) {
          png_read_row(handle_.png, held_->row(y), nullptr);
        }
      }
      png_read_end(handle_.png, nullptr);
    });
  }

  Guard guard_;
  PngHandle handle_;
  ByteView rest_;
  int passes_ = 1;
  std::uint32_t read_ = 0;
  /// The whole picture, when it is interlaced.
  std::optional<HeldPicture> held_;
};

}  // namespace

std::unique_ptr<PictureSource> open_png(ByteView file) {
  return std::make_unique<PngReader>(file);
}

}  // namespace quoll::image_helper
