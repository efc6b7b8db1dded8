#include <gtest/gtest.h>

#include "tests/image_helper/fixture.h"
#include "tests/image_helper/sample_files.h"

namespace quoll::test {
namespace {

class Orientation : public ImageHelper {
 protected:
  void expect(const Bytes& file, const SampleImage& stored, unsigned orientation,
              const char* format) const {
    SCOPED_TRACE(std::string(format) + " of orientation " + std::to_string(orientation));
    const SampleImage image = turned(stored, orientation);
    const auto png = to_png(file);
    ASSERT_TRUE(png) << (log_->lines().empty() ? "" : log_->lines().back());
    EXPECT_EQ(difference(read_png(*png), image), "");
    const auto tiff = to_tiff(file);
    ASSERT_TRUE(tiff);
    EXPECT_EQ(difference(read_tiff(*tiff), image), "");
    const auto size = images_->size(file);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, image.width);
    EXPECT_EQ(size->height, image.height);
  }
};

TEST_F(Orientation, EveryFormatIsTurnedUpright) {
  const SampleImage image = sample_image(70, 45, 3, 8);
  SampleImage grey = sample_image(45, 70, 1, 16);
  grey.profile = sample_profile(1);
  for (unsigned orientation = 1; orientation <= 8; ++orientation) {
    const Bytes exif = sample_exif(orientation, orientation % 2 == 0);
    const Bytes jpeg = jpeg_file(image, {.exif = exif});
    expect(jpeg, read_jpeg(jpeg), orientation, "JPEG");
    expect(png_file(grey, {.interlaced = orientation % 3 == 0, .exif = exif}), grey, orientation,
           "PNG");
    expect(extended_webp_file(image, exif), image, orientation, "WebP");
    expect(tiff_file(grey, {.tiled = true, .orientation = orientation}), grey, orientation, "TIFF");
    const SampleImage small = sample_image(33, 40, 1, 1);
    SampleImage widened = small;
    widened.bits = 8;
    for (auto& sample : widened.samples) {
      sample = sample != 0 ? 255 : 0;
    }
    expect(tiff_file(small, {.orientation = orientation}), widened, orientation,
           "TIFF that its library converts");
  }
}

TEST_F(Orientation, ExifThatSaysNothingUsableIsUpright) {
  struct Row {
    Bytes exif;
    const char* reason;
  };
  Bytes short_one = sample_exif(6, false);
  short_one.resize(15);
  Bytes far = sample_exif(6, false);
  far[4] = far[5] = far[6] = far[7] = 0xff;
  Bytes many = sample_exif(6, false);
  many[8] = many[9] = 0xff;
  many[10] = 0;
  const Row rows[] = {
      {sample_exif(0, false), "there is no orientation 0"},
      {sample_exif(9, true), "nor 9"},
      {short_one, "cut off inside the entry"},
      {far, "a directory beyond the end"},
      {many, "more entries than bytes, none of them an orientation"},
      {{'n', 'o', 'n', 'e'}, "no byte order"},
      {Bytes(1), "a single byte"},
  };
  const SampleImage image = sample_image(30, 20, 3, 8);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.reason);
    expect(extended_webp_file(image, row.exif), image, 1, "WebP");
  }
}

}  // namespace
}  // namespace quoll::test
