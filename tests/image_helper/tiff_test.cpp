#include <gtest/gtest.h>
#include <tiff.h>

#include <cmath>

#include "tests/image_helper/fixture.h"
#include "tests/image_helper/sample_files.h"

namespace quoll::test {
namespace {

class Tiff : public ImageHelper {
 protected:
  void expect(const Bytes& file, const SampleImage& image, const std::string& what) const {
    SCOPED_TRACE(what);
    const auto png = to_png(file);
    ASSERT_TRUE(png) << (log_->lines().empty() ? "" : log_->lines().back());
    EXPECT_EQ(difference(read_png(*png), image), "");
  }
};

TEST_F(Tiff, StripsAndTilesOfEveryKindKeepTheirSamples) {
  for (const unsigned bits : {8u, 16u}) {
    for (unsigned channels = 1; channels <= 4; ++channels) {
      SampleImage image = sample_image(75, 50, channels, bits);
      image.profile = sample_profile(channels);
      for (const bool tiled : {false, true}) {
        for (const bool planes : {false, true}) {
          for (const char* const mode : {"wl", "wb"}) {
            const std::string what = std::to_string(channels) + " channels of " +
                                     std::to_string(bits) + (tiled ? " tiled" : " striped") +
                                     (planes ? " in planes " : " ") + mode;
            expect(tiff_file(image, {.mode = mode, .tiled = tiled, .planes = planes}), image, what);
          }
        }
      }
    }
  }
}

TEST_F(Tiff, Compressions) {
  const SampleImage image = sample_image(75, 50, 3, 16);
  for (const int compression : {COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS}) {
    const bool predictor = compression != COMPRESSION_PACKBITS;
    expect(tiff_file(image,
                     {.compression = static_cast<unsigned>(compression), .predictor = predictor}),
           image, "compression " + std::to_string(compression));
  }
  expect(tiff_file(image, {.mode = "w8"}), image, "the form for large files");
}

TEST_F(Tiff, InvertedGreysAndSmallGreys) {
  for (const unsigned bits : {1u, 4u, 8u, 16u}) {
    const SampleImage image = sample_image(60, 40, 1, bits);
    const unsigned full = (1u << bits) - 1;
    SampleImage inverted = image;
    for (auto& sample : inverted.samples) {
      sample = static_cast<std::uint16_t>(full - sample);
      if (bits < 8) {
        sample = static_cast<std::uint16_t>(sample * 255 / full);
      }
    }
    inverted.bits = bits < 8 ? 8 : bits;
    expect(tiff_file(image, {.photometric = PHOTOMETRIC_MINISWHITE}), inverted,
           "of " + std::to_string(bits) + " bits");
  }
}

TEST_F(Tiff, APaletteBecomesRgb) {
  const SampleImage indices = sample_image(60, 40, 1, 8);
  SampleImage image{60, 40, 3, 8, {}, {}};
  for (const std::uint16_t index : indices.samples) {
    std::uint16_t rgb[3];
    palette_colour(index, rgb);
    image.samples.insert(image.samples.end(), rgb, rgb + 3);
  }
  expect(tiff_file(indices, {.photometric = PHOTOMETRIC_PALETTE}), image, "8 bits");
}

TEST_F(Tiff, InksBecomeRgb) {
  for (const unsigned bits : {8u, 16u}) {
    for (const bool planes : {false, true}) {
      SampleImage inks = sample_image(60, 40, 4, bits);
      inks.profile = sample_profile(0);
      const std::uint64_t full = (1u << bits) - 1;
      SampleImage image{60, 40, 3, bits, {}, {}};
      for (std::size_t i = 0; i < inks.samples.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
          const std::uint64_t light = (full - inks.samples[i + c]) * (full - inks.samples[i + 3]);
          image.samples.push_back(static_cast<std::uint16_t>((light + full / 2) / full));
        }
      }
      expect(tiff_file(inks, {.planes = planes, .photometric = PHOTOMETRIC_SEPARATED}), image,
             "of " + std::to_string(bits) + " bits");
    }
  }
}

TEST_F(Tiff, MultipliedAlphaIsTakenOut) {
  for (const unsigned bits : {8u, 16u}) {
    const unsigned full = (1u << bits) - 1;
    SampleImage multiplied = sample_image(60, 40, 4, bits);
    SampleImage image = multiplied;
    for (std::size_t i = 0; i < image.samples.size(); i += 4) {
      const unsigned alpha = image.samples[i + 3];
      for (std::size_t c = 0; c < 3; ++c) {
        const auto product =
            static_cast<std::uint16_t>(std::uint64_t{image.samples[i + c]} * alpha / full);
        multiplied.samples[i + c] = product;
        const double divided =
            alpha == 0 ? product : std::floor(double{1.0} * product * full / alpha + 0.5);
        image.samples[i + c] = static_cast<std::uint16_t>(divided);
      }
    }
    expect(tiff_file(multiplied, {.extra_kind = EXTRASAMPLE_ASSOCALPHA}), image,
           "of " + std::to_string(bits) + " bits");
  }
}

TEST_F(Tiff, ASampleThatIsNoAlphaIsLeftOut) {
  const SampleImage more = sample_image(60, 40, 4, 8);
  SampleImage image{60, 40, 3, 8, {}, {}};
  for (std::size_t i = 0; i < more.samples.size(); ++i) {
    if (i % 4 != 3) {
      image.samples.push_back(more.samples[i]);
    }
  }
  expect(tiff_file(more, {.extra_kind = EXTRASAMPLE_UNSPECIFIED}), image, "a mask, perhaps");
}

TEST_F(Tiff, AnotherKindOfPngColourSurvivesTheWayThroughTiff) {
  // What happens to an image object: first TIFF, then PNG.
  for (const unsigned bits : {8u, 16u}) {
    for (unsigned channels = 1; channels <= 4; ++channels) {
      SampleImage image = sample_image(60, 40, channels, bits);
      image.profile = sample_profile(channels);
      const auto tiff = to_tiff(png_file(image));
      ASSERT_TRUE(tiff);
      expect(*tiff, image, std::to_string(channels) + " channels");
    }
  }
}

}  // namespace
}  // namespace quoll::test
