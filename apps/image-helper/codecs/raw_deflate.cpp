#include "apps/image-helper/codecs/raw_deflate.h"

#include <new>

namespace quoll::image_helper {

RawDeflate::RawDeflate(int level) {
  if (deflateInit2(&stream_, level, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw std::bad_alloc();
  }
}

std::size_t RawDeflate::add(std::span<const unsigned char> batch, bool last,
                            std::span<unsigned char> out) {
  stream_.next_in = const_cast<unsigned char*>(batch.data());  // is only read
  stream_.avail_in = static_cast<uInt>(batch.size());
  stream_.next_out = out.data();
  stream_.avail_out = static_cast<uInt>(out.size());
  deflate(&stream_, last ? Z_FINISH : Z_FULL_FLUSH);
  return out.size() - stream_.avail_out;
}

}  // namespace quoll::image_helper
