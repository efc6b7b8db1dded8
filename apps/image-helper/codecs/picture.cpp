#include "apps/image-helper/codecs/picture.h"

#include <cstring>
#include <utility>

namespace quoll::image_helper {

void check_size(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) {
    throw Refused("the image has no pixels");
  }
  if (width > kMostPixels || height > kMostPixels || width * height > kMostPixels) {
    throw Refused("the image claims " + std::to_string(width) + " x " + std::to_string(height) +
                  " pixels, which is more than the limit");
  }
}

void PictureSource::drop_unfitting_profile() {
  // The header of a profile has 128 bytes. Its first four are the profile's length; its colour
  // space is at byte 16.
  const std::vector<unsigned char>& profile = picture_.profile;
  const auto length = [&] {
    return std::size_t{profile[0]} << 24 | std::size_t{profile[1]} << 16 |
           std::size_t{profile[2]} << 8 | std::size_t{profile[3]};
  };
  const char* const space = picture_.channels < 3 ? "GRAY" : "RGB ";
  if (profile.size() < 128 || length() != profile.size() ||
      std::memcmp(profile.data() + 16, space, 4) != 0) {
    picture_.profile.clear();
  }
}

HeldPicture::HeldPicture(Picture picture) {
  picture_ = std::move(picture);
  const std::uint64_t bytes = std::uint64_t{picture_.row_bytes()} * picture_.height;
  if (bytes > kMostHeldBytes) {
    throw Refused("the image needs more memory than the limit");
  }
  pixels_.resize(bytes);
}

HeldPicture::HeldPicture(PictureSource& source) : HeldPicture(source.picture()) {
  for (std::uint32_t y = 0; y < picture_.height; ++y) {
    source.read(row(y));
  }
}

void HeldPicture::read(unsigned char* row) {
  std::memcpy(row, this->row(next_++), picture_.row_bytes());
}

}  // namespace quoll::image_helper
