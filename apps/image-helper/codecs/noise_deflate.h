#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace quoll::image_helper {

/// Compresses noise, as in photos, to raw deflate: fast, since little can be gained. The build
/// chooses what it is made of.
class NoiseDeflate {
 public:
  NoiseDeflate();
  NoiseDeflate(const NoiseDeflate&) = delete;
  NoiseDeflate& operator=(const NoiseDeflate&) = delete;
  ~NoiseDeflate();

  /// Compresses a batch into `out`, with a full flush at its end, and answers how many bytes it
  /// became: all of `out` when there was no room.
  [[nodiscard]] std::size_t add(std::span<const unsigned char> batch, bool last,
                                std::span<unsigned char> out);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// The Adler-32 checksum after more bytes; it begins with 1.
[[nodiscard]] std::uint32_t adler32_with(std::uint32_t checksum,
                                         std::span<const unsigned char> bytes);

}  // namespace quoll::image_helper
