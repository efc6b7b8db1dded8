#include <gtest/gtest.h>
#include <tiff.h>

#include <algorithm>
#include <random>
#include <string_view>

#include "tests/image_helper/fixture.h"
#include "tests/image_helper/sample_files.h"

namespace quoll::test {
namespace {

struct NamedFile {
  std::string name;
  Bytes file;
};

GifFrame gif_frame() {
  const SampleImage indices = sample_image(40, 30, 1, 4);
  return {0, 0, 40, 30, Bytes(indices.samples.begin(), indices.samples.end())};
}

std::vector<NamedFile> one_of_each() {
  SampleImage image = sample_image(40, 30, 3, 8);
  image.profile = sample_profile(3);
  return {
      {"PNG", png_file(image)},
      {"interlaced PNG", png_file(image, {.interlaced = true})},
      {"JPEG", jpeg_file(image)},
      {"progressive JPEG", jpeg_file(image, {.progressive = true})},
      {"TIFF", tiff_file(image)},
      {"tiled TIFF", tiff_file(image, {.compression = COMPRESSION_LZW, .tiled = true})},
      {"deflated TIFF", tiff_file(image, {.compression = COMPRESSION_ADOBE_DEFLATE})},
      {"GIF", gif_file(40, 30, {gif_frame(), gif_frame()})},
      {"WebP", webp_file(image)},
      {"extended WebP", extended_webp_file(image, sample_exif(6, false))},
      {"animated WebP", animated_webp_file(64, 64, {{0, 0, image}, {2, 2, image}})},
  };
}

/// True when the line tells of a file that was refused, not of a helper that went wrong.
bool is_orderly(const std::string& line) {
  constexpr std::string_view kWrong[] = {"signal",          "took too long", "ended with status",
                                         "no whole result", "runtime error", "====="};
  return line.starts_with("image: ") && line.find('\n') == std::string::npos &&
         std::none_of(std::begin(kWrong), std::end(kWrong),
                      [&](std::string_view wrong) { return line.find(wrong) != line.npos; });
}

class Damage : public ImageHelper {
 protected:
  /// Nothing comes, and one more line says why.
  void expect_nothing(const Bytes& file, const std::string& what) const {
    const std::size_t before = log_->lines().size();
    EXPECT_FALSE(to_png(file)) << what;
    const auto lines = log_->lines();
    ASSERT_EQ(lines.size(), before + 1) << what;
    EXPECT_TRUE(is_orderly(lines.back())) << what << ": " << lines.back();
  }
};

TEST_F(Damage, TheFilesThatAreCutBelowAreWhole) {
  for (const NamedFile& whole : one_of_each()) {
    EXPECT_TRUE(to_png(whole.file)) << whole.name;
  }
}

TEST_F(Damage, ATruncatedFileGivesNothing) {
  for (const NamedFile& whole : one_of_each()) {
    const std::size_t length = whole.file.size();
    std::vector<std::size_t> cuts{0, 1, 2, 4, 8, 11, 12, 13, 16, 20, 30, 40};
    for (std::size_t part = 1; part < 16; ++part) {
      cuts.push_back(length * part / 16);
    }
    for (std::size_t missing = 1; missing <= 6; ++missing) {
      cuts.push_back(length - missing);
    }
    for (const std::size_t cut : cuts) {
      Bytes file = whole.file;
      file.resize(cut);
      expect_nothing(
          file, whole.name + " cut at " + std::to_string(cut) + " of " + std::to_string(length));
    }
  }
}

TEST_F(Damage, FlippedBytesNeverBringTheHelperDown) {
  std::minstd_rand random(5);
  for (const NamedFile& whole : one_of_each()) {
    for (int i = 0; i < 25; ++i) {
      Bytes file = whole.file;
      for (int flip = 0; flip < 3; ++flip) {
        file[random() % file.size()] ^= static_cast<unsigned char>(1 + random() % 255);
      }
      static_cast<void>(to_png(file));  // it may or may not be noticed in a format without sums
    }
  }
  for (const std::string& line : log_->lines()) {
    EXPECT_TRUE(is_orderly(line)) << line;
  }
}

TEST_F(Damage, APngWithAnyByteChangedIsNoticed) {
  // Every byte of it stands under a checksum.
  const Bytes whole = png_file(sample_image(9, 7, 3, 8));
  for (std::size_t i = 0; i < whole.size(); i += 3) {
    Bytes file = whole;
    file[i] ^= 0x20;
    expect_nothing(file, "byte " + std::to_string(i));
  }
}

TEST_F(Damage, BytesThatAreNoImage) {
  std::mt19937 random(3);
  expect_nothing({}, "no bytes");
  for (const std::size_t length : {1u, 3u, 100u, 5000u}) {
    Bytes noise(length);
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<unsigned char>(random()); });
    expect_nothing(noise, "noise");
    for (const NamedFile& whole : one_of_each()) {
      Bytes begins_well = noise;
      begins_well.resize(12 + length);
      std::copy_n(whole.file.begin(), 12, begins_well.begin());
      expect_nothing(begins_well, "noise behind the beginning of " + whole.name);
    }
  }
  constexpr std::string_view kText = "<svg xmlns='http://www.w3.org/2000/svg'/>";
  expect_nothing(Bytes(kText.begin(), kText.end()), "a drawing");
}

void put_big(Bytes& file, std::size_t offset, std::uint32_t number, unsigned length) {
  for (unsigned i = 0; i < length; ++i) {
    file[offset + i] = static_cast<unsigned char>(number >> (8 * (length - 1 - i)));
  }
}

/// CRC-32 as PNG has it.
std::uint32_t checksum(const unsigned char* bytes, std::size_t length) {
  std::uint32_t sum = 0xffffffff;
  for (std::size_t i = 0; i < length; ++i) {
    sum ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) {
      sum = sum >> 1 ^ (sum & 1 ? 0xedb88320 : 0);
    }
  }
  return ~sum;
}

Bytes png_claiming(std::uint32_t side) {
  Bytes file = png_file(sample_image(4, 4, 4, 16));
  put_big(file, 16, side, 4);
  put_big(file, 20, side, 4);
  put_big(file, 29, checksum(file.data() + 12, 17), 4);
  return file;
}

Bytes jpeg_claiming(std::uint32_t side) {
  Bytes file = jpeg_file(sample_image(8, 8, 3, 8));
  constexpr unsigned char kFrame[] = {0xff, 0xc0};
  const auto frame = std::search(file.begin(), file.end(), std::begin(kFrame), std::end(kFrame));
  const auto offset = static_cast<std::size_t>(frame - file.begin());
  put_big(file, offset + 5, side, 2);
  put_big(file, offset + 7, side, 2);
  return file;
}

Bytes tiff_claiming(std::uint32_t side) {
  Bytes file = tiff_file(sample_image(4, 4, 3, 8), {.mode = "wb"});
  const std::size_t directory =
      std::size_t{file[4]} << 24 | std::size_t{file[5]} << 16 | std::size_t{file[6]} << 8 | file[7];
  const unsigned entries = file[directory] * 256u + file[directory + 1];
  for (std::size_t entry = directory + 2; entry < directory + 2 + entries * 12u; entry += 12) {
    const unsigned tag = file[entry] * 256u + file[entry + 1];
    if (tag == TIFFTAG_IMAGEWIDTH || tag == TIFFTAG_IMAGELENGTH) {
      file[entry + 3] = 4;  // a long number
      put_big(file, entry + 8, side, 4);
    }
  }
  return file;
}

TEST_F(Damage, ABombIsRefusedForItsClaim) {
  const GifFrame small = gif_frame();
  Bytes gif_frame_claim = gif_file(40, 30, {small});
  constexpr unsigned char kFrame[] = {',', 0, 0, 0, 0, 40, 0, 30, 0};
  const auto found = std::search(gif_frame_claim.begin(), gif_frame_claim.end(), std::begin(kFrame),
                                 std::end(kFrame));
  ASSERT_NE(found, gif_frame_claim.end());
  std::fill_n(found + 5, 4, static_cast<unsigned char>(0xff));
  const SampleImage image = sample_image(4, 4, 3, 8);
  const std::vector<NamedFile> bombs{
      {"PNG", png_claiming(100'000)},
      {"JPEG, as large as one can claim", jpeg_claiming(65'500)},
      {"TIFF", tiff_claiming(100'000)},
      {"GIF, as large as one can claim", gif_file(65'535, 65'535, {small})},
      {"a frame of a GIF", gif_frame_claim},
      {"WebP", animated_webp_file(100'000, 100'000, {{0, 0, image}})},
  };
  for (const NamedFile& bomb : bombs) {
    expect_nothing(bomb.file, bomb.name);
    EXPECT_NE(log_->lines().back().find("more than the limit"), std::string::npos)
        << bomb.name << ": " << log_->lines().back();
    EXPECT_FALSE(images_->size(bomb.file)) << bomb.name;
    EXPECT_FALSE(to_tiff(bomb.file)) << bomb.name;
  }
}

TEST_F(Damage, APictureThatWouldHaveToBeHeldIsRefusedAboveTheLimit) {
  // 2^28 pixels of 8 bytes, interlaced, would take 2 GB.
  Bytes file = png_file(sample_image(4, 4, 4, 16), {.interlaced = true});
  put_big(file, 16, 16'384, 4);
  put_big(file, 20, 16'384, 4);
  put_big(file, 29, checksum(file.data() + 12, 17), 4);
  expect_nothing(file, "interlaced");
  EXPECT_NE(log_->lines().back().find("memory"), std::string::npos) << log_->lines().back();
}

}  // namespace
}  // namespace quoll::test
