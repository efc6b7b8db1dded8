#include "apps/image-helper/codecs/deflate.h"

#include <algorithm>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

namespace {

// A zlib stream has these two bytes, then blocks of raw deflate, then a checksum of the
// uncompressed data.
constexpr unsigned char kZlibHeader[] = {0x78, 0x01};
constexpr std::size_t kChecksum = 4;
constexpr int kThorough = 4;  // the lowest level that looks for a longer match before it takes one

/// Tells a screenshot from a photo by its filtered bytes: at most half of a photo's are zero, and
/// more than four fifths of a screenshot's.
bool is_flat(std::span<const unsigned char> batch) {
  const auto zeros = std::count(batch.begin(), batch.end(), 0);
  return static_cast<std::size_t>(zeros) > batch.size() / 4 * 3;
}

}  // namespace

// Neither compressor makes more than twice a batch of it, at worst.
Deflate::Deflate(std::size_t longest_batch)
    : thorough_(kThorough), out_(2 * longest_batch + 1024) {}

std::span<const unsigned char> Deflate::add(std::span<const unsigned char> batch, bool last) {
  std::size_t made = 0;
  if (!begun_) {
    made = static_cast<std::size_t>(
        std::copy(std::begin(kZlibHeader), std::end(kZlibHeader), out_.data()) - out_.data());
    begun_ = true;
  }
  // Each batch ends with a full flush, so the other compressor can continue.
  const std::span<unsigned char> room(out_.data() + made, out_.size() - made - kChecksum);
  const std::size_t size =
      is_flat(batch) ? thorough_.add(batch, last, room) : noise_.add(batch, last, room);
  if (size == room.size()) {
    throw ImageError("the pixels cannot be compressed");
  }
  made += size;
  checksum_ = adler32_with(checksum_, batch);
  for (unsigned shift = 32; last && shift != 0;) {
    shift -= 8;
    out_[made++] = static_cast<unsigned char>(checksum_ >> shift);
  }
  return {out_.data(), made};
}

}  // namespace quoll::image_helper
