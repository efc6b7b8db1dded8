#pragma once

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quoll::image_helper {

/// Makes a zlib stream of filtered pixels, fast rather than small.
///
/// Each batch goes to one of two compressors. Noise, as in photos, goes to ISA-L, which is many
/// times faster than zlib there and compresses as well. Data that is mostly zero, as in the flat
/// parts of a screenshot, goes to zlib, which finds the long repetitions that ISA-L misses and is
/// fast there too. So a photo inside a screenshot is compressed well too.
class Deflate {
 public:
  explicit Deflate(std::size_t longest_batch);
  Deflate(const Deflate&) = delete;
  Deflate& operator=(const Deflate&) = delete;
  ~Deflate() { deflateEnd(&thorough_); }

  /// Compresses a batch and answers the next piece of the stream. The piece is valid until the next
  /// call. Set `last` for the last batch.
  [[nodiscard]] std::span<const unsigned char> add(std::span<const unsigned char> batch, bool last);

 private:
  [[nodiscard]] std::size_t compress_fast(std::span<const unsigned char> batch, bool last,
                                          std::span<unsigned char> out);
  [[nodiscard]] std::size_t compress_thoroughly(std::span<const unsigned char> batch, bool last,
                                                std::span<unsigned char> out);

  isal_zstream fast_ = {};
  std::vector<unsigned char> fast_work_;
  z_stream thorough_ = {};
  std::vector<unsigned char> out_;
  std::uint32_t checksum_ = 1;
  bool begun_ = false;
};

}  // namespace quoll::image_helper
