#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "apps/image-helper/codecs/noise_deflate.h"
#include "apps/image-helper/codecs/raw_deflate.h"

namespace quoll::image_helper {

/// Makes a zlib stream of filtered pixels, fast rather than small.
///
/// Each batch goes to one of two compressors. Noise, as in photos, goes to one that is many times
/// faster there and compresses as well. Data that is mostly zero, as in the flat parts of a
/// screenshot, goes to zlib, which finds the long repetitions that the other misses and is fast
/// there too. So a photo inside a screenshot is compressed well too.
class Deflate {
 public:
  explicit Deflate(std::size_t longest_batch);

  /// Compresses a batch and answers the next piece of the stream. The piece is valid until the next
  /// call. Set `last` for the last batch.
  [[nodiscard]] std::span<const unsigned char> add(std::span<const unsigned char> batch, bool last);

 private:
  NoiseDeflate noise_;
  RawDeflate thorough_;
  std::vector<unsigned char> out_;
  std::uint32_t checksum_ = 1;
  bool begun_ = false;
};

}  // namespace quoll::image_helper
