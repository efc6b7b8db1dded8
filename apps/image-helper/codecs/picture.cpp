#include "apps/image-helper/codecs/picture.h"

#include <cstring>
#include <utility>

namespace quoll::image_helper {

void check_size(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) {
    throw ImageError("the image has no pixels");
  }
  if (width > kMostPixels || height > kMostPixels || width * height > kMostPixels) {
    throw ImageError("the image claims " + std::to_string(width) + " x " + std::to_string(height) +
                     " pixels, which is more than the limit");
  }
}

bool Picture::has_fitting_profile() const {
  // Its length is at byte 0, its version at 8, its colour space at 16, its mark at 36, and the
  // number of its tags at 128. The table of the tags follows.
  constexpr std::size_t kHeader = 132;
  constexpr std::size_t kTag = 12;
  if (profile.size() < kHeader) {
    return false;
  }
  const auto number_at = [&](std::size_t at) {
    return std::size_t{profile[at]} << 24 | std::size_t{profile[at + 1]} << 16 |
           std::size_t{profile[at + 2]} << 8 | std::size_t{profile[at + 3]};
  };
  const auto text_at = [&](std::size_t at, const char* text) {
    return std::memcmp(profile.data() + at, text, 4) == 0;
  };
  const bool whole = number_at(0) == profile.size() && (profile[8] < 4 || profile.size() % 4 == 0);
  return whole && text_at(16, channels < 3 ? "GRAY" : "RGB ") && text_at(36, "acsp") &&
         number_at(128) <= (profile.size() - kHeader) / kTag;
}

void PictureSource::drop_unfitting_profile() {
  if (!picture_.has_fitting_profile()) {
    picture_.profile.clear();
  }
}

HeldPicture::HeldPicture(Picture picture) {
  picture_ = std::move(picture);
  const std::uint64_t bytes = std::uint64_t{picture_.row_bytes()} * picture_.height;
  if (bytes > kMostHeldBytes) {
    throw ImageError("the image needs more memory than the limit");
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
