// Converting images to PNG by the helper process, compared with libpng with its default settings,
// which reads the same picture in this process.
//
// The photo is artificial: slow waves of colour with a grain of noise, 4000 x 3000 pixels, as a
// JPEG file of quality 90, which is as large as a camera's, and as a 16-bit TIFF file. The
// screenshot is artificial too: a desktop with a gradient, windows, and lines of small shapes in
// four shades as text, 3840 x 2160 pixels of RGBA, as a PNG file. QUOLL_BENCH_PHOTO and
// QUOLL_BENCH_SCREENSHOT name real files to measure too.

#include <benchmark/benchmark.h>
#include <png.h>
#include <tiffio.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
// jpeglib.h uses FILE and size_t without including their headers.
#include <jpeglib.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "apps/image-helper/codecs/readers.h"
#include "quoll/linux/image_helper/images.h"

namespace {

using quoll::foundation::Bytes;
using quoll::image_helper::PictureSource;
using quoll::platform::BitmapImageFileType;

/// Writes the picture by libpng's default settings: level 6, with every filter tried.
Bytes write_with_defaults(PictureSource& source) {
  constexpr int kColourTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA,
                                  PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA};
  const auto& picture = source.picture();
  Bytes out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &out,
      [](png_structp self, png_bytep bytes, std::size_t length) {
        auto& to = *static_cast<Bytes*>(png_get_io_ptr(self));
        to.insert(to.end(), bytes, bytes + length);
      },
      nullptr);
  png_set_IHDR(png, info, picture.width, picture.height, static_cast<int>(picture.bits),
               kColourTypes[picture.channels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  std::vector<unsigned char> row(picture.row_bytes());
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    source.read(row.data());
    png_write_row(png, row.data());
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return out;
}

constexpr unsigned kPhotoWidth = 4000, kPhotoHeight = 3000;

/// The artificial photo, as rows of RGB between 0 and 1.
class Photo {
 public:
  const std::vector<double>& next_row() {
    for (unsigned x = 0; x < kPhotoWidth; ++x) {
      const double light = 0.5 + 0.3 * std::sin(x * 0.004 + 0.002 * y_) * std::cos(y_ * 0.003);
      for (unsigned c = 0; c < 3; ++c) {
        const double colour = 0.12 * std::sin(x * 0.0021 * (c + 1) + y_ * 0.0017);
        row_[3 * x + c] = std::clamp(light + colour + grain_(random_), 0.0, 1.0);
      }
    }
    ++y_;
    return row_;
  }

 private:
  unsigned y_ = 0;
  std::mt19937 random_{1};
  std::normal_distribution<double> grain_{0.0, 0.03};
  std::vector<double> row_ = std::vector<double>(3 * std::size_t{kPhotoWidth});
};

Bytes photo_as_jpeg() {
  jpeg_compress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long length = 0;
  jpeg_mem_dest(&jpeg, &bytes, &length);
  jpeg.image_width = kPhotoWidth;
  jpeg.image_height = kPhotoHeight;
  jpeg.input_components = 3;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 90, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  Photo photo;
  std::vector<JSAMPLE> samples(3 * std::size_t{kPhotoWidth});
  for (unsigned y = 0; y < kPhotoHeight; ++y) {
    const auto& row = photo.next_row();
    std::transform(row.begin(), row.end(), samples.begin(),
                   [](double light) { return static_cast<JSAMPLE>(light * 255); });
    JSAMPROW line = samples.data();
    jpeg_write_scanlines(&jpeg, &line, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  Bytes file(bytes, bytes + length);
  std::free(bytes);
  return file;
}

Bytes read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

Bytes photo_as_tiff() {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  TIFF* const tiff = TIFFFdOpen(dup(fileno(file.get())), "photo", "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kPhotoWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kPhotoHeight);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 8);
  Photo photo;
  std::vector<std::uint16_t> samples(3 * std::size_t{kPhotoWidth});
  for (unsigned y = 0; y < kPhotoHeight; ++y) {
    const auto& row = photo.next_row();
    std::transform(row.begin(), row.end(), samples.begin(),
                   [](double light) { return static_cast<std::uint16_t>(light * 65535); });
    TIFFWriteScanline(tiff, samples.data(), y, 0);
  }
  TIFFClose(tiff);
  return read_file("/proc/self/fd/" + std::to_string(fileno(file.get())));
}

/// The artificial screenshot.
class Screenshot final : public PictureSource {
 public:
  Screenshot() {
    picture_.width = 3840;
    picture_.height = 2160;
    picture_.channels = 4;
    std::mt19937 random(2);
    for (auto& shape : shapes_) {
      for (auto& shade : shape) {
        const auto drawn = random() % 8;  // half of a letter is background, and some of it edges
        shade = static_cast<unsigned char>(drawn < 4 ? 0 : drawn < 7 ? 3 : 1 + random() % 2);
      }
    }
    for (auto& letter : letters_) {
      letter = static_cast<unsigned char>(random() % shapes_.size());
    }
  }
  void read(unsigned char* row) override {
    for (unsigned x = 0; x < picture_.width; ++x, row += 4) {
      const std::uint32_t colour = colour_at(x, y_);
      row[0] = static_cast<unsigned char>(colour >> 16);
      row[1] = static_cast<unsigned char>(colour >> 8);
      row[2] = static_cast<unsigned char>(colour);
      row[3] = 255;
    }
    ++y_;
  }

 private:
  [[nodiscard]] std::uint32_t colour_at(unsigned x, unsigned y) const {
    const unsigned window_x = x % 1280, window_y = y % 1080;
    if (window_x < 40 || window_x >= 1240 || window_y < 40 || window_y >= 1040) {
      const unsigned shade = 40 + y / 18;  // the desktop behind the windows
      return shade << 16 | (shade + 20) << 8 | (shade + 60);
    }
    if (window_y < 80) {
      return 0x3b4252;  // a title bar
    }
    constexpr std::uint32_t kShades[] = {0xfcfcfc, 0xb0b0b0, 0x686868, 0x202020};
    const unsigned line = y / 24, column = x / 10, dx = x % 10, dy = y % 24;
    const unsigned char letter = letters_[(line * 384 + column) % letters_.size()];
    const bool space = letter % 6 == 0;
    if (space || dx >= 8 || dy < 6 || dy >= 18) {
      return kShades[0];
    }
    return kShades[shapes_[letter][(dy - 6) / 2 * 4 + dx / 2]];
  }

  unsigned y_ = 0;
  /// The letters of an artificial alphabet, each of 4 x 6 blocks of 2 x 2 pixels.
  std::array<std::array<unsigned char, 24>, 64> shapes_{};
  std::array<unsigned char, std::size_t{384} * 90> letters_{};
};

void convert(benchmark::State& state, const Bytes& file) {
  const auto images = quoll::image_helper::make_images(QUOLL_BENCH_IMAGE_HELPER);
  std::size_t length = 0;
  for (auto _ : state) {
    const auto png = images->convert(file, BitmapImageFileType::NSBitmapImageFileTypePNG);
    if (!png) {
      state.SkipWithError("the helper gave nothing");
      return;
    }
    length = png->size();
  }
  state.counters["MB"] = static_cast<double>(length) / 1e6;
}

void convert_with_defaults(benchmark::State& state, const Bytes& file) {
  std::size_t length = 0;
  for (auto _ : state) {
    length = write_with_defaults(*quoll::image_helper::open_picture(file)).size();
  }
  state.counters["MB"] = static_cast<double>(length) / 1e6;
}

void measure(const std::string& name, Bytes file) {
  const auto shared = std::make_shared<const Bytes>(std::move(file));
  const auto add = [&](const std::string& who, void (*run)(benchmark::State&, const Bytes&)) {
    benchmark::RegisterBenchmark((name + "/" + who).c_str(),
                                 [shared, run](benchmark::State& state) { run(state, *shared); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  };
  add("quoll", convert);
  add("libpng_default", convert_with_defaults);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  measure("photo_8_bit_jpeg", photo_as_jpeg());
  measure("photo_16_bit_tiff", photo_as_tiff());
  Screenshot screenshot;
  measure("screenshot_png", write_with_defaults(screenshot));
  for (const char* const name : {"QUOLL_BENCH_PHOTO", "QUOLL_BENCH_SCREENSHOT"}) {
    if (const char* const path = std::getenv(name); path != nullptr) {
      measure(name, read_file(path));
    }
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
