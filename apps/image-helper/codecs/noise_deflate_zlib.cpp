#include "apps/image-helper/codecs/noise_deflate.h"
#include "apps/image-helper/codecs/raw_deflate.h"

namespace quoll::image_helper {

struct NoiseDeflate::State {
  RawDeflate deflate{Z_BEST_SPEED};
};

NoiseDeflate::NoiseDeflate() : state_(std::make_unique<State>()) {}

NoiseDeflate::~NoiseDeflate() = default;

std::size_t NoiseDeflate::add(std::span<const unsigned char> batch, bool last,
                              std::span<unsigned char> out) {
  return state_->deflate.add(batch, last, out);
}

std::uint32_t adler32_with(std::uint32_t checksum, std::span<const unsigned char> bytes) {
  return static_cast<std::uint32_t>(
      adler32(checksum, bytes.data(), static_cast<uInt>(bytes.size())));
}

}  // namespace quoll::image_helper
