#include "apps/image-helper/codecs/exif.h"

#include <algorithm>
#include <string_view>

namespace quoll::image_helper {

namespace {

using namespace std::string_view_literals;

bool begins_with(ByteView bytes, std::string_view text) {
  return bytes.size() >= text.size() &&
         std::equal(text.begin(), text.end(), bytes.begin(),
                    [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
}

/// Reads numbers of either byte order. A number outside the data reads as 0.
class Numbers {
 public:
  Numbers(ByteView bytes, bool big_endian) : bytes_(bytes), big_endian_(big_endian) {}

  [[nodiscard]] std::uint32_t at(std::size_t offset, unsigned length) const {
    if (offset > bytes_.size() || length > bytes_.size() - offset) {
      return 0;
    }
    std::uint32_t number = 0;
    for (unsigned i = 0; i < length; ++i) {
      number = number << 8 | bytes_[offset + (big_endian_ ? i : length - 1 - i)];
    }
    return number;
  }

 private:
  ByteView bytes_;
  bool big_endian_;
};

constexpr std::uint32_t kOrientation = 0x0112;
constexpr std::uint32_t kShort = 3;

}  // namespace

unsigned orientation_of_exif(ByteView exif) {
  if (begins_with(exif, "Exif\0\0"sv)) {
    exif = exif.subspan(6);
  }
  const bool big_endian = begins_with(exif, "MM\0*"sv);
  if (!big_endian && !begins_with(exif, "II*\0"sv)) {
    return 1;
  }
  const Numbers numbers(exif, big_endian);
  const std::size_t directory = numbers.at(4, 4);
  const std::uint32_t entries = numbers.at(directory, 2);
  for (std::uint32_t i = 0; i < entries; ++i) {
    const std::size_t entry = directory + 2 + std::size_t{12} * i;
    if (numbers.at(entry, 2) == kOrientation && numbers.at(entry + 2, 2) == kShort) {
      const std::uint32_t orientation = numbers.at(entry + 8, 2);
      return orientation >= 1 && orientation <= 8 ? orientation : 1;
    }
  }
  return 1;
}

}  // namespace quoll::image_helper
