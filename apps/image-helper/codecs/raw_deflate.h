#pragma once

#include <zlib.h>

#include <cstddef>
#include <span>

namespace quoll::image_helper {

/// Compresses to raw deflate with zlib, batch by batch.
class RawDeflate {
 public:
  /// Throws `std::bad_alloc`. `level` is zlib's.
  explicit RawDeflate(int level);
  RawDeflate(const RawDeflate&) = delete;
  RawDeflate& operator=(const RawDeflate&) = delete;
  ~RawDeflate() { deflateEnd(&stream_); }

  /// Compresses a batch into `out`, with a full flush at its end, and answers how many bytes it
  /// became: all of `out` when there was no room.
  [[nodiscard]] std::size_t add(std::span<const unsigned char> batch, bool last,
                                std::span<unsigned char> out);

 private:
  z_stream stream_ = {};
};

}  // namespace quoll::image_helper
