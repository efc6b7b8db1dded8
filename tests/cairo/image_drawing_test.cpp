#include "quoll/platform/images.h"

#include <limits>
#include <string_view>

#include "tests/cairo/pixels.h"

namespace quoll::test {
namespace {

using cairo_drawing::FileType;
using foundation::Bytes;
using platform::BitmapImageFileType;
using platform::NSImage;
using platform::NSRect;

/// Two by two pixels: red and green above, blue and nothing below.
Bytes sample_png() {
  const auto drawing = make_drawing(FileType::kPng, {2, 2});
  drawing->fill_rect({{0, 0}, {1, 1}}, kRed);
  drawing->fill_rect({{1, 0}, {1, 1}}, kGreen);
  drawing->fill_rect({{0, 1}, {1, 1}}, kBlue);
  return drawing->finish().value();
}

class ImageDrawing : public PixelTest {
 protected:
  /// What is drawn of an image of these bytes in four by four pixels.
  Rows drawn(const Bytes& file) const {
    const auto drawing = pixels(4, 4);
    NSImage image(file, 2, 2);
    image.flipped = true;
    drawing->draw_image(image, {{1, 1}, {2, 2}});
    EXPECT_TRUE(drawing->finish()) << "an image does no harm to the drawing";
    const auto again = pixels(4, 4);
    again->draw_image(image, {{1, 1}, {2, 2}});
    return rows(*again, 4, 4);
  }
  const Rows upright_{"....", ".rg.", ".b..", "...."};
  const Rows nothing_ = Rows(4, "....");
};

TEST_F(ImageDrawing, LaysTheImagesAxisAlongThatOfTheCoordinates) {
  const Rows upsideDown{"....", ".b..", ".rg.", "...."};
  for (const bool contextFlipped : {true, false}) {
    for (const bool imageFlipped : {true, false}) {
      const auto drawing = pixels(4, 4);
      if (!contextFlipped) {
        drawing->translate(0, 4);
        drawing->flip();
      }
      NSImage image(sample_png(), 2, 2);
      image.flipped = imageFlipped;
      drawing->draw_image(image, {{1, 1}, {2, 2}});
      EXPECT_EQ(rows(*drawing, 4, 4), contextFlipped == imageFlipped ? upright_ : upsideDown)
          << contextFlipped << imageFlipped;
    }
  }
}

TEST_F(ImageDrawing, StretchesTheImage) {
  const auto opaque = make_drawing(FileType::kPng, {2, 1});
  opaque->fill_rect({{0, 0}, {1, 1}}, kRed);
  opaque->fill_rect({{1, 0}, {1, 1}}, kBlue);
  NSImage image(opaque->finish().value(), 2, 1);
  image.flipped = true;
  const auto drawing = pixels(200, 10);
  drawing->draw_image(image, {{10, 2}, {180, 5}});
  EXPECT_EQ(drawing->pixel(10, 2), kRedPixel) << "the edge does not fade";
  EXPECT_EQ(drawing->pixel(50, 6), kRedPixel);
  EXPECT_EQ(drawing->pixel(150, 2), kBluePixel);
  EXPECT_EQ(drawing->pixel(189, 6), kBluePixel);
  EXPECT_EQ(drawing->pixel(9, 2), 0U);
  EXPECT_EQ(drawing->pixel(190, 2), 0U);
  EXPECT_EQ(drawing->pixel(50, 1), 0U);
  EXPECT_EQ(drawing->pixel(50, 7), 0U);
}

TEST_F(ImageDrawing, OddRectanglesDoNoHarm) {
  const NSImage image(sample_png(), 2, 2);
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto drawing = pixels(4, 4);
  for (const NSRect& rect :
       {NSRect{{0, 0}, {0, 4}}, NSRect{{0, 0}, {4, -1}}, NSRect{{0, 0}, {1e-300, 4}},
        NSRect{{0, 0}, {4, 1e-7}}, NSRect{{9, 9}, {4, 4}}}) {
    drawing->draw_image(image, rect);
  }
  EXPECT_EQ(rows(*drawing, 4, 4), nothing_);
  drawing->draw_image(image, {{-kInfinity, -kInfinity}, {kInfinity, kInfinity}});
  drawing->draw_image(image, {{-1e9, 0}, {2e9, 1e-5}});
  EXPECT_TRUE(drawing->finish());
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ImageDrawing, GoesOnPaperToo) {
  for (const FileType type : {FileType::kPdf, FileType::kSvg}) {
    const NSImage image(sample_png(), 2, 2);
    const auto empty = make_drawing(type, {50, 50})->finish();
    const auto drawing = make_drawing(type, {50, 50});
    drawing->draw_image(image, {{10, 10}, {20, 20}});
    const auto file = drawing->finish();
    ASSERT_TRUE(file);
    EXPECT_GT(file->size(), empty->size());
  }
}

/// Writes PNG of everything but what it is told not to know.
class SampleImages final : public platform::Images {
 public:
  explicit SampleImages(std::optional<Bytes> png) : png_(std::move(png)) {}
  std::optional<Size> size(const Bytes& /*file*/) override { return Size{2, 2}; }
  std::optional<Bytes> convert(const Bytes& file, BitmapImageFileType type) override {
    asked.emplace_back(file, type);
    return png_;
  }
  std::vector<std::pair<Bytes, BitmapImageFileType>> asked;

 private:
  std::optional<Bytes> png_;
};

TEST_F(ImageDrawing, ReadsPngItself) {
  const auto images = std::make_shared<SampleImages>(std::nullopt);
  const platform::ScopedDesktop scoped({.images = images});
  EXPECT_EQ(drawn(sample_png()), upright_);
  EXPECT_TRUE(images->asked.empty());
}

TEST_F(ImageDrawing, AsksThePlatformForOtherTypes) {
  const auto images = std::make_shared<SampleImages>(sample_png());
  const platform::ScopedDesktop scoped({.images = images});
  const Bytes jpeg{0xff, 0xd8, 0xff};
  EXPECT_EQ(drawn(jpeg), upright_);
  ASSERT_FALSE(images->asked.empty());
  EXPECT_EQ(images->asked.front(), std::pair(jpeg, BitmapImageFileType::NSBitmapImageFileTypePNG));
}

TEST_F(ImageDrawing, WhatThePlatformCannotReadDrawsNothing) {
  const std::optional<Bytes> answers[] = {std::nullopt, Bytes{}, Bytes{1, 2, 3}};
  for (const auto& answer : answers) {
    const auto log = std::make_shared<RecordingLog>();
    const platform::ScopedDesktop scoped(
        {.log = log, .images = std::make_shared<SampleImages>(answer)});
    EXPECT_EQ(drawn({0xff, 0xd8, 0xff}), nothing_);
    EXPECT_EQ(log->lines(), std::vector<std::string>(2, "drawing: an image cannot be read"));
  }
}

TEST_F(ImageDrawing, BrokenPngDrawsNothing) {
  const Bytes whole = sample_png();
  for (std::size_t length = 0; length + 12 < whole.size(); ++length) {
    const std::size_t before = log_->lines().size();
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(drawn(cut), nothing_) << length;
    EXPECT_EQ(log_->lines().size(), before + 2) << "one line each time: " << length;
  }
  Bytes damaged = whole;
  const std::string_view kData = "IDAT";
  *(std::search(damaged.begin(), damaged.end(), kData.begin(), kData.end()) + 8) ^= 0x55;
  EXPECT_EQ(drawn(damaged), nothing_) << "its check sum is wrong";
}

TEST_F(ImageDrawing, RefusesMorePixelsThanTheLimit) {
  const auto with_size = [](std::uint32_t width, std::uint32_t height) {
    Bytes file = sample_png();
    for (int i = 0; i < 4; ++i) {
      file[16U + static_cast<unsigned>(i)] = static_cast<unsigned char>(width >> (24 - 8 * i));
      file[20U + static_cast<unsigned>(i)] = static_cast<unsigned char>(height >> (24 - 8 * i));
    }
    return file;
  };
  EXPECT_EQ(drawn(with_size(0xffffffff, 0xffffffff)), nothing_);
  EXPECT_EQ(log_->lines().back(), "drawing: an image has more pixels than the limit");
  EXPECT_EQ(drawn(with_size((1U << 14) + 1, 1U << 14)), nothing_) << "one row more";
  EXPECT_EQ(log_->lines().back(), "drawing: an image has more pixels than the limit");
  EXPECT_EQ(drawn(with_size(1U << 14, 1U << 14)), nothing_) << "the check sum is wrong";
  EXPECT_TRUE(log_->lines().back().starts_with("drawing: an image cannot be read: "))
      << log_->lines().back();
}

}  // namespace
}  // namespace quoll::test
