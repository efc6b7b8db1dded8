#include "fuzz/pixels.h"

#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "apps/image-helper/codecs/readers.h"
#include "fuzz/require.h"
#include "quoll/linux/image_helper/memory_file.h"

namespace quoll::fuzz {

using namespace image_helper;

Pixels::Pixels(Picture picture, std::vector<unsigned char> bytes) : bytes_(std::move(bytes)) {
  picture_ = std::move(picture);
}

Pixels::Pixels(PictureSource& source) {
  picture_ = source.picture();
  bytes_.resize(picture_.row_bytes() * picture_.height);
  for (std::uint32_t y = 0; y < picture_.height; ++y) {
    source.read(bytes_.data() + y * picture_.row_bytes());
  }
}

void Pixels::read(unsigned char* row) {
  require(next_ + picture_.row_bytes() <= bytes_.size());
  std::copy_n(bytes_.data() + next_, picture_.row_bytes(), row);
  next_ += picture_.row_bytes();
}

bool Pixels::is_as(const Pixels& other) const {
  const Picture& a = picture();
  const Picture& b = other.picture();
  return a.width == b.width && a.height == b.height && a.channels == b.channels &&
         a.bits == b.bits && bytes_ == other.bytes_;
}

void check_written(Pixels& pixels, void (*write)(PictureSource&, int)) {
  const posix::UniqueFd file = make_memory_file();
  require(static_cast<bool>(file));
  pixels.begin_again();
  write(pixels, file.get());
  struct stat status {};
  require(fstat(file.get(), &status) == 0 && status.st_size > 0);
  const Mapping written(file.get(), static_cast<std::size_t>(status.st_size));
  require(written.good());
  const auto source = open_picture(written.bytes());
  const Pixels again(*source);
  require(again.is_as(pixels));
  const auto& profile = again.picture().profile;
  require(profile.empty() || profile == pixels.picture().profile);
}

}  // namespace quoll::fuzz
