#include <gtest/gtest.h>

#include <functional>

#include "tests/image_helper/fixture.h"
#include "tests/image_helper/sample_files.h"

namespace quoll::test {
namespace {

SampleImage with_profile(SampleImage image, std::size_t length = 400) {
  image.profile = sample_profile(image.channels, length);
  return image;
}

/// The pixels of a palette file, by `palette_colour`, with the alphas that `png_file` writes.
SampleImage through_palette(const SampleImage& indices, unsigned alphas) {
  SampleImage image{indices.width, indices.height, alphas != 0 ? 4u : 3u, 8, {}, {}};
  for (const std::uint16_t index : indices.samples) {
    std::uint16_t rgb[3];
    palette_colour(index, rgb);
    image.samples.insert(image.samples.end(), rgb, rgb + 3);
    if (alphas != 0) {
      image.samples.push_back(static_cast<std::uint16_t>(index < alphas ? index * 3 & 0xff : 255));
    }
  }
  return image;
}

/// Small greys spread over 8 bits.
SampleImage widened(SampleImage image) {
  const unsigned full = (1u << image.bits) - 1;
  for (auto& sample : image.samples) {
    sample = static_cast<std::uint16_t>(sample * 255 / full);
  }
  image.bits = 8;
  return image;
}

class RoundTrip : public ImageHelper {
 protected:
  /// Both results hold exactly these pixels and this profile, and the size is theirs.
  void expect(const Bytes& file, const SampleImage& image, const std::string& what) const {
    SCOPED_TRACE(what);
    const auto png = to_png(file);
    ASSERT_TRUE(png) << log();
    EXPECT_EQ(difference(read_png(*png), image), "");
    const auto tiff = to_tiff(file);
    ASSERT_TRUE(tiff) << log();
    EXPECT_EQ(difference(read_tiff(*tiff), image), "");
    const auto size = images_->size(file);
    ASSERT_TRUE(size) << log();
    EXPECT_EQ(size->width, image.width);
    EXPECT_EQ(size->height, image.height);
    EXPECT_TRUE(log_->lines().empty()) << log();
  }
  [[nodiscard]] std::string log() const {
    return log_->lines().empty() ? "" : log_->lines().back();
  }
};

TEST_F(RoundTrip, PngKeepsEverySampleOfEveryKind) {
  for (const unsigned bits : {8u, 16u}) {
    for (unsigned channels = 1; channels <= 4; ++channels) {
      for (const bool interlaced : {false, true}) {
        const SampleImage image = with_profile(sample_image(67, 41, channels, bits));
        expect(png_file(image, {.interlaced = interlaced}), image,
               std::to_string(channels) + " channels of " + std::to_string(bits));
      }
    }
  }
}

TEST_F(RoundTrip, SmallPngGreysAndPalettesBecomePlain) {
  for (const unsigned bits : {1u, 2u, 4u, 8u}) {
    const SampleImage image = sample_image(67, 41, 1, bits);
    const unsigned alphas = (1u << bits) / 2;
    expect(png_file(image), widened(image), "grey of " + std::to_string(bits));
    expect(png_file(image, {.palette = true}), through_palette(image, 0),
           "palette of " + std::to_string(bits));
    expect(png_file(image, {.interlaced = true, .palette = true, .transparent = alphas}),
           through_palette(image, alphas), "palette with alphas of " + std::to_string(bits));
  }
}

TEST_F(RoundTrip, ATransparentGreyBecomesAlpha) {
  const SampleImage image = sample_image(40, 30, 1, 16);
  SampleImage expected{40, 30, 2, 16, {}, {}};
  const std::uint16_t transparent = image.samples[77];
  for (const std::uint16_t sample : image.samples) {
    expected.samples.push_back(sample);
    expected.samples.push_back(sample == transparent ? std::uint16_t{0} : std::uint16_t{65535});
  }
  expect(png_file(image, {.transparent = transparent}), expected, "grey with tRNS");
}

TEST_F(RoundTrip, ShapesAtTheEdgesOfBatchesAndBands) {
  struct Row {
    std::uint32_t width, height;
    const char* reason;
  };
  constexpr Row kRows[] = {
      {1, 1, "nothing smaller is an image"},
      {1, 3000, "rows of one pixel"},
      {300'000, 3, "few rows to a batch of compression"},
      {700, 1000, "more than one batch, and a last one that is not full"},
  };
  for (const Row& row : kRows) {
    const SampleImage image = sample_image(row.width, row.height, 3, 8);
    expect(png_file(image), image, row.reason);
  }
}

TEST_F(RoundTrip, FlatAndNoisyPartsInOnePicture) {
  // Each part goes through another compressor, and the last batch through either.
  for (const bool flat_first : {true, false}) {
    SampleImage image = sample_image(1000, 2100, 4, 8);
    const std::size_t half = image.samples.size() / 2;
    const auto flat = image.samples.begin() + (flat_first ? 0 : static_cast<std::ptrdiff_t>(half));
    std::fill(flat, flat + static_cast<std::ptrdiff_t>(half), std::uint16_t{200});
    expect(png_file(image), image, flat_first ? "flat first" : "noisy first");
  }
}

TEST_F(RoundTrip, JpegIsWhatItsLibraryDecodes) {
  for (const unsigned channels : {1u, 3u}) {
    for (const bool progressive : {false, true}) {
      // A profile longer than one marker of 64 KB.
      const SampleImage image = with_profile(sample_image(83, 59, channels, 8), 100'000);
      const Bytes file = jpeg_file(image, {.progressive = progressive});
      SampleImage expected = read_jpeg(file);
      expected.profile = image.profile;
      expect(file, expected, std::to_string(channels) + " channels");
    }
  }
}

TEST_F(RoundTrip, InksBecomeRgbWithoutTheirProfile) {
  for (const bool adobe : {false, true}) {
    for (const bool transformed : {false, true}) {
      if (transformed && !adobe) {
        continue;  // only the marker says that inks are transformed
      }
      SampleImage image = sample_image(50, 40, 4, 8);
      image.profile = sample_profile(0);
      const Bytes file = jpeg_file(image, {.adobe = adobe, .transformed = transformed});
      const SampleImage inks = read_jpeg(file);
      SampleImage expected{inks.width, inks.height, 3, 8, {}, {}};
      for (std::size_t i = 0; i < inks.samples.size(); i += 4) {
        const auto light = [&](std::size_t c) {
          return adobe ? inks.samples[i + c] : 255 - inks.samples[i + c];
        };
        for (std::size_t c = 0; c < 3; ++c) {
          expected.samples.push_back(static_cast<std::uint16_t>((light(c) * light(3) + 127) / 255));
        }
      }
      expect(file, expected, adobe ? "marked, so inverted" : "as ink");
    }
  }
}

TEST_F(RoundTrip, WebpKeepsColoursUnderAlphaAndTheProfile) {
  for (const unsigned channels : {3u, 4u}) {
    const SampleImage image = sample_image(61, 33, channels, 8);
    expect(webp_file(image), image, "simple");
    expect(extended_webp_file(with_profile(image), {}), with_profile(image), "extended");
  }
}

TEST_F(RoundTrip, TheFirstFrameOfAnAnimatedWebpOnItsCanvas) {
  const SampleImage frame = sample_image(20, 10, 4, 8);
  SampleImage canvas{64, 48, 4, 8, std::vector<std::uint16_t>(64 * 48 * 4), {}};
  for (std::uint32_t y = 0; y < frame.height; ++y) {
    std::copy_n(frame.at(0, y), frame.width * 4,
                canvas.samples.begin() + (std::ptrdiff_t{y} + 6) * 64 * 4 + 4 * 4);
  }
  const WebpFrame first{4, 6, frame};
  const WebpFrame second{0, 0, sample_image(64, 48, 3, 8)};
  expect(animated_webp_file(64, 48, {first, second}), canvas,
         "a frame inside, then one that covers");
  expect(animated_webp_file(64, 48, {second, first}), second.image, "a frame that covers");
}

GifFrame gif_frame(std::uint32_t left, std::uint32_t top, std::uint32_t width,
                   std::uint32_t height) {
  GifFrame frame{left, top, width, height, {}};
  const SampleImage indices = sample_image(width, height, 1, 4);
  frame.indices.assign(indices.samples.begin(), indices.samples.end());
  return frame;
}

SampleImage drawn(const GifFrame& frame, std::uint32_t width, std::uint32_t height,
                  unsigned channels) {
  SampleImage canvas{width, height, channels, 8, {}, {}};
  canvas.samples.resize(std::size_t{width} * height * channels);
  for (std::uint32_t y = 0; y < frame.height; ++y) {
    for (std::uint32_t x = 0; x < frame.width; ++x) {
      const unsigned char index = frame.indices[y * frame.width + x];
      if (index == frame.transparent || frame.left + x >= width || frame.top + y >= height) {
        continue;
      }
      std::uint16_t* const pixel =
          &canvas.samples[((frame.top + y) * std::size_t{width} + frame.left + x) * channels];
      palette_colour(index, pixel);
      if (channels == 4) {
        pixel[3] = 255;
      }
    }
  }
  return canvas;
}

TEST_F(RoundTrip, TheFirstFrameOfAGifOnItsCanvas) {
  GifFrame whole = gif_frame(0, 0, 45, 37);
  expect(gif_file(45, 37, {whole}), drawn(whole, 45, 37, 3), "it covers the canvas");
  whole.interlaced = true;
  expect(gif_file(45, 37, {whole}), drawn(whole, 45, 37, 3), "interlaced lines");
  whole.transparent = 3;
  expect(gif_file(45, 37, {whole, gif_frame(0, 0, 5, 5)}), drawn(whole, 45, 37, 4),
         "a transparent colour, and a second frame that is not drawn");
  const GifFrame inside = gif_frame(7, 9, 11, 5);
  expect(gif_file(45, 37, {inside}), drawn(inside, 45, 37, 4), "around it nothing");
  const GifFrame beyond = gif_frame(40, 30, 20, 20);
  expect(gif_file(45, 37, {beyond}), drawn(beyond, 45, 37, 4), "cut off at the canvas");
}

TEST_F(RoundTrip, AProfileForOtherChannelsIsLeftOut) {
  struct Row {
    unsigned channels;
    Bytes profile;
    const char* reason;
  };
  const auto changed = [](Bytes profile, std::size_t at, unsigned char byte) {
    profile[at] = byte;
    return profile;
  };
  Bytes wrong_length = sample_profile(3);
  wrong_length.push_back(0);
  Bytes no_tags = changed(sample_profile(3, 132), 3, 131);
  no_tags.pop_back();
  const Row rows[] = {
      {3, sample_profile(1), "a grey profile on colours"},
      {1, sample_profile(3), "a colour profile on greys"},
      {3, sample_profile(0), "inks"},
      {3, wrong_length, "longer than it says"},
      {3, Bytes(10), "shorter than its header"},
      {3, no_tags, "its header and nothing else"},
      {3, changed(sample_profile(3, 401), 8, 4), "a length that version 4 does not have"},
      {3, changed(sample_profile(3), 36, 'x'), "not marked as a profile"},
      {3, changed(sample_profile(3), 131, 200), "more tags than there is room for"},
  };
  for (const Row& row : rows) {
    SampleImage image = sample_image(20, 20, row.channels, 8);
    image.profile = row.profile;
    const Bytes file = jpeg_file(image);
    expect(file, read_jpeg(file), row.reason);
  }
}

}  // namespace
}  // namespace quoll::test
