#include "apps/image-helper/codecs/deflate.h"

#include <algorithm>
#include <new>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

namespace {

// A zlib stream has these two bytes, then blocks of raw deflate, then a checksum of the
// uncompressed data.
constexpr unsigned char kHeader[] = {0x78, 0x01};
constexpr std::size_t kChecksum = 4;

/// Tells a screenshot from a photo by its filtered bytes: at most half of a photo's are zero, and
/// more than four fifths of a screenshot's.
bool is_flat(std::span<const unsigned char> batch) {
  const auto zeros = std::count(batch.begin(), batch.end(), 0);
  return static_cast<std::size_t>(zeros) > batch.size() / 4 * 3;
}

void check_room(std::size_t left) {
  if (left == 0) {
    throw ImageError("the pixels cannot be compressed");
  }
}

}  // namespace

// Neither compressor makes more than twice a batch of it, at worst.
Deflate::Deflate(std::size_t longest_batch)
    : fast_work_(ISAL_DEF_LVL2_SMALL), out_(2 * longest_batch + 1024) {
  isal_deflate_init(&fast_);
  fast_.level = 2;
  fast_.level_buf = fast_work_.data();
  fast_.level_buf_size = static_cast<std::uint32_t>(fast_work_.size());
  fast_.gzip_flag = IGZIP_DEFLATE;
  fast_.flush = FULL_FLUSH;
  constexpr int kLevel = 4;  // the lowest level that looks for a longer match before it takes one
  if (deflateInit2(&thorough_, kLevel, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw std::bad_alloc();
  }
}

std::span<const unsigned char> Deflate::add(std::span<const unsigned char> batch, bool last) {
  std::size_t made = 0;
  if (!begun_) {
    made = static_cast<std::size_t>(std::copy(std::begin(kHeader), std::end(kHeader), out_.data()) -
                                    out_.data());
    begun_ = true;
  }
  // Each batch ends with a full flush, so the other compressor can continue.
  const std::span<unsigned char> room(out_.data() + made, out_.size() - made - kChecksum);
  made +=
      is_flat(batch) ? compress_thoroughly(batch, last, room) : compress_fast(batch, last, room);
  checksum_ = isal_adler32(checksum_, batch.data(), batch.size());
  for (unsigned shift = 32; last && shift != 0;) {
    shift -= 8;
    out_[made++] = static_cast<unsigned char>(checksum_ >> shift);
  }
  return {out_.data(), made};
}

std::size_t Deflate::compress_fast(std::span<const unsigned char> batch, bool last,
                                   std::span<unsigned char> out) {
  fast_.next_in = const_cast<unsigned char*>(batch.data());  // is only read
  fast_.avail_in = static_cast<std::uint32_t>(batch.size());
  fast_.end_of_stream = last ? 1 : 0;
  fast_.next_out = out.data();
  fast_.avail_out = static_cast<std::uint32_t>(out.size());
  isal_deflate(&fast_);
  check_room(fast_.avail_out);
  return out.size() - fast_.avail_out;
}

std::size_t Deflate::compress_thoroughly(std::span<const unsigned char> batch, bool last,
                                         std::span<unsigned char> out) {
  thorough_.next_in = const_cast<unsigned char*>(batch.data());  // is only read
  thorough_.avail_in = static_cast<uInt>(batch.size());
  thorough_.next_out = out.data();
  thorough_.avail_out = static_cast<uInt>(out.size());
  deflate(&thorough_, last ? Z_FINISH : Z_FULL_FLUSH);
  check_room(thorough_.avail_out);
  return out.size() - thorough_.avail_out;
}

}  // namespace quoll::image_helper
