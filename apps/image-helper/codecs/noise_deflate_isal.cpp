#include <isa-l/igzip_lib.h>

#include <vector>

#include "apps/image-helper/codecs/noise_deflate.h"

namespace quoll::image_helper {

struct NoiseDeflate::State {
  isal_zstream stream = {};
  std::vector<unsigned char> work = std::vector<unsigned char>(ISAL_DEF_LVL2_SMALL);
};

NoiseDeflate::NoiseDeflate() : state_(std::make_unique<State>()) {
  isal_zstream& stream = state_->stream;
  isal_deflate_init(&stream);
  stream.level = 2;
  stream.level_buf = state_->work.data();
  stream.level_buf_size = static_cast<std::uint32_t>(state_->work.size());
  stream.gzip_flag = IGZIP_DEFLATE;
  stream.flush = FULL_FLUSH;
}

NoiseDeflate::~NoiseDeflate() = default;

std::size_t NoiseDeflate::add(std::span<const unsigned char> batch, bool last,
                              std::span<unsigned char> out) {
  isal_zstream& stream = state_->stream;
  stream.next_in = const_cast<unsigned char*>(batch.data());  // is only read
  stream.avail_in = static_cast<std::uint32_t>(batch.size());
  stream.end_of_stream = last ? 1 : 0;
  stream.next_out = out.data();
  stream.avail_out = static_cast<std::uint32_t>(out.size());
  isal_deflate(&stream);
  return out.size() - stream.avail_out;
}

std::uint32_t adler32_with(std::uint32_t checksum, std::span<const unsigned char> bytes) {
  return isal_adler32(checksum, bytes.data(), bytes.size());
}

}  // namespace quoll::image_helper
