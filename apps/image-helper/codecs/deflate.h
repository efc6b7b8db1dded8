#pragma once

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quoll::image_helper {

/// A zlib stream of filtered pixels, compressed fast rather than small.
///
/// Noise goes through ISA-L, which is many times faster than zlib and as small. What is mostly
/// zeros, as the flat parts of a screenshot are, goes through zlib, which finds the long
/// repetitions that ISA-L passes over and is fast there itself. Each batch is looked at by itself,
/// so a photo in a screenshot is served as well.
class Deflate {
 public:
  explicit Deflate(std::size_t longest_batch);
  Deflate(const Deflate&) = delete;
  Deflate& operator=(const Deflate&) = delete;
  ~Deflate() { deflateEnd(&thorough_); }

  /// The next piece of the stream, which is the last when `last`; it lives until the next call.
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
