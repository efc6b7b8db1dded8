#include <cstdio>
#include <cstdlib>
// jpeglib.h uses FILE and size_t without including their headers.
#include <jerror.h>
#include <jpeglib.h>

#include <vector>

#include "apps/image-helper/codecs/cmyk.h"
#include "apps/image-helper/codecs/exif.h"
#include "apps/image-helper/codecs/guard.h"
#include "apps/image-helper/codecs/readers.h"

namespace quoll::image_helper {

namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;

struct JpegHandle {
  jpeg_decompress_struct jpeg = {};

  JpegHandle() = default;
  JpegHandle(const JpegHandle&) = delete;
  JpegHandle& operator=(const JpegHandle&) = delete;
  ~JpegHandle() { jpeg_destroy_decompress(&jpeg); }
};

class JpegReader final : public PictureSource {
 public:
  explicit JpegReader(ByteView file) {
    jpeg_.err = jpeg_std_error(&errors_);
    errors_.error_exit = on_error;
    errors_.emit_message = on_message;
    jpeg_.client_data = &guard_;
    guard_.run([&] {
      jpeg_create_decompress(&jpeg_);
      jpeg_.mem->max_memory_to_use = static_cast<long>(kMostHeldBytes);
      jpeg_mem_src(&jpeg_, file.data(), file.size());
      jpeg_save_markers(&jpeg_, kExifMarker, 0xffff);
      jpeg_save_markers(&jpeg_, kProfileMarker, 0xffff);
      jpeg_read_header(&jpeg_, TRUE);
    });
    check_size(jpeg_.image_width, jpeg_.image_height);
    read_header();
    guard_.run([this] { jpeg_start_decompress(&jpeg_); });
  }

  void read(unsigned char* row) override {
    JSAMPROW line = inks_.empty() ? row : inks_.data();
    guard_.run([&] {
      jpeg_read_scanlines(&jpeg_, &line, 1);
      if (jpeg_.output_scanline == jpeg_.output_height) {
        jpeg_finish_decompress(&jpeg_);
      }
    });
    if (!inks_.empty()) {
      convert_inks(row);
    }
  }

 private:
  [[noreturn]] static void on_error(j_common_ptr jpeg) {
    char reason[JMSG_LENGTH_MAX];
    jpeg->err->format_message(jpeg, reason);
    static_cast<Guard*>(jpeg->client_data)->fail(reason);
  }
  /// libjpeg warns when it has made up pixels, so a warning is damage.
  static void on_message(j_common_ptr jpeg, int level) {
    if (level < 0) {
      on_error(jpeg);
    }
  }

  void read_header() {
    picture_.width = jpeg_.image_width;
    picture_.height = jpeg_.image_height;
    switch (jpeg_.jpeg_color_space) {
      case JCS_GRAYSCALE:
        jpeg_.out_color_space = JCS_GRAYSCALE;
        picture_.channels = 1;
        break;
      case JCS_YCbCr:
      case JCS_RGB:
        jpeg_.out_color_space = JCS_RGB;
        break;
      case JCS_CMYK:
      case JCS_YCCK:
        jpeg_.out_color_space = JCS_CMYK;
        inks_.resize(std::size_t{picture_.width} * 4);
        break;
      default:
        throw ImageError("a JPEG file of an unknown colour space");
    }
    for (auto* marker = jpeg_.marker_list; marker != nullptr; marker = marker->next) {
      if (marker->marker == kExifMarker && picture_.orientation == 1) {
        picture_.orientation = orientation_of_exif({marker->data, marker->data_length});
      }
    }
    read_profile();
  }

  void read_profile() {
    JOCTET* profile = nullptr;
    unsigned length = 0;
    guard_.run([&] { jpeg_read_icc_profile(&jpeg_, &profile, &length); });
    const std::unique_ptr<JOCTET, void (*)(void*)> owner(profile, std::free);
    if (profile != nullptr) {
      picture_.profile.assign(profile, profile + length);
    }
  }

  void convert_inks(unsigned char* row) const {
    // The program that writes most of these files writes inverted inks, and a marker of its own.
    const unsigned char invert = jpeg_.saw_Adobe_marker != 0 ? 0 : 0xff;
    for (std::size_t x = 0; x < picture_.width; ++x) {
      unsigned char light[4];
      for (std::size_t i = 0; i < 4; ++i) {
        light[i] = inks_[4 * x + i] ^ invert;
      }
      rgb_of_cmyk(light, row + 3 * x);
    }
  }

  Guard guard_;
  jpeg_error_mgr errors_ = {};
  JpegHandle handle_;
  jpeg_decompress_struct& jpeg_ = handle_.jpeg;
  /// One row of CMYK; empty for a file that has no CMYK.
  std::vector<unsigned char> inks_;
};

}  // namespace

std::unique_ptr<PictureSource> open_jpeg(ByteView file) {
  return std::make_unique<JpegReader>(file);
}

}  // namespace quoll::image_helper
