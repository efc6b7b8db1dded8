#include "tests/image_helper/sample_image.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace quoll::test {

SampleImage sample_image(std::uint32_t width, std::uint32_t height, unsigned channels,
                         unsigned bits) {
  SampleImage image{width, height, channels, bits, {}, {}};
  std::minstd_rand random(width * 31 + height * 7 + channels * 3 + bits);
  const unsigned full = (1u << bits) - 1;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      for (unsigned c = 0; c < channels; ++c) {
        const auto noise = static_cast<unsigned>(random() % (full / 8 + 1));
        const unsigned wave = (x * 5 + y * 3 * (c + 1)) * (full / 255 + 1);
        image.samples.push_back(static_cast<std::uint16_t>((wave + noise) & full));
      }
    }
  }
  return image;
}

foundation::Bytes sample_profile(unsigned channels, std::size_t length) {
  foundation::Bytes profile(length);
  const auto put = [&](std::size_t offset, const char* text) {
    std::copy_n(text, std::strlen(text), profile.begin() + static_cast<std::ptrdiff_t>(offset));
  };
  const auto put_number = [&](std::size_t offset, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
      profile[offset + i] = static_cast<unsigned char>(number >> (24 - 8 * i));
    }
  };
  put_number(0, static_cast<std::uint32_t>(length));
  put_number(8, 0x02400000);
  put(12, channels == 0 ? "prtr" : "mntr");
  put(16, channels == 0 ? "CMYK" : channels < 3 ? "GRAY" : "RGB ");
  put(20, channels == 0 ? "Lab " : "XYZ ");
  put(36, "acsp");
  put_number(68, 0x0000f6d6);
  put_number(72, 0x00010000);
  put_number(76, 0x0000d32d);
  put_number(128, 0);  // no tags
  for (std::size_t i = 132; i < length; ++i) {
    profile[i] = static_cast<unsigned char>(i * 7 + channels);
  }
  return profile;
}

foundation::Bytes sample_exif(unsigned orientation, bool big_endian) {
  const auto number = static_cast<unsigned char>(orientation);
  if (big_endian) {
    return {'M', 'M', 0, 42, 0, 0, 0,      8, 0, 1, 1, 0x12, 0,
            3,   0,   0, 0,  1, 0, number, 0, 0, 0, 0, 0,    0};
  }
  return {'I', 'I', 42, 0, 8, 0,      0, 0, 1, 0, 0x12, 1, 3,
          0,   1,   0,  0, 0, number, 0, 0, 0, 0, 0,    0, 0};
}

SampleImage turned(const SampleImage& stored, unsigned orientation) {
  SampleImage image = stored;
  if (orientation >= 5) {
    std::swap(image.width, image.height);
  }
  image.samples.clear();
  const std::uint32_t right = stored.width - 1;
  const std::uint32_t bottom = stored.height - 1;
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::uint32_t x = 0; x < image.width; ++x) {
      const std::uint16_t* pixel = nullptr;
      switch (orientation) {  // what the first row and the first column of the file are
        case 1:
          pixel = stored.at(x, y);
          break;  // top, left
        case 2:
          pixel = stored.at(right - x, y);
          break;  // top, right
        case 3:
          pixel = stored.at(right - x, bottom - y);
          break;  // bottom, right
        case 4:
          pixel = stored.at(x, bottom - y);
          break;  // bottom, left
        case 5:
          pixel = stored.at(y, x);
          break;  // left, top
        case 6:
          pixel = stored.at(y, bottom - x);
          break;  // right, top
        case 7:
          pixel = stored.at(right - y, bottom - x);
          break;  // right, bottom
        default:
          pixel = stored.at(right - y, x);
          break;  // left, bottom
      }
      image.samples.insert(image.samples.end(), pixel, pixel + image.channels);
    }
  }
  return image;
}

std::string difference(const SampleImage& is, const SampleImage& should_be) {
  const auto shape = [](const SampleImage& image) {
    return std::to_string(image.width) + "x" + std::to_string(image.height) + " of " +
           std::to_string(image.channels) + " channels of " + std::to_string(image.bits) +
           " bits, profile of " + std::to_string(image.profile.size()) + " bytes";
  };
  if (shape(is) != shape(should_be)) {
    return shape(is) + " instead of " + shape(should_be);
  }
  if (is.profile != should_be.profile) {
    return "another profile";
  }
  const auto [a, b] = std::mismatch(is.samples.begin(), is.samples.end(), should_be.samples.begin(),
                                    should_be.samples.end());
  if (a == is.samples.end() && b == should_be.samples.end()) {
    return {};
  }
  const auto position = static_cast<std::size_t>(a - is.samples.begin());
  if (a == is.samples.end() || b == should_be.samples.end()) {
    return "another number of samples";
  }
  return "sample " + std::to_string(position) + " is " + std::to_string(*a) + " instead of " +
         std::to_string(*b);
}

}  // namespace quoll::test
