#include "apps/share/request/received_bytes.h"

#include <algorithm>
#include <cerrno>

#include "apps/share/request/image_signature.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;
/// A larger image is shared as a file.
constexpr std::size_t kLargestImage = std::size_t{256} << 20;

}  // namespace

std::optional<ReceivedBytes> read_beginning(const ByteSource& source) {
  ReceivedBytes received;
  const auto read_to = [&](std::size_t enough) {
    return posix::read_until(source.descriptor, received.beginning, enough, received.is_whole,
                             source.read_timeout);
  };
  if (!read_to(kBlock)) {
    return std::nullopt;
  }
  if (!received.is_whole && begins_as_image(received.beginning) &&
      !read_to(std::min(kLargestImage, source.limit))) {
    return std::nullopt;
  }
  return received;
}

std::optional<std::size_t> write_received(const ReceivedBytes& received, const ByteSource& source,
                                          int target) {
  bool ended = received.is_whole;
  std::size_t size = received.beginning.size();
  if (!posix::write_all(target, received.beginning)) {
    return std::nullopt;
  }
  std::string block;
  while (!ended && size <= source.limit) {
    block.clear();
    if (!posix::read_until(source.descriptor, block, kBlock, ended, source.read_timeout) ||
        !posix::write_all(target, block)) {
      return std::nullopt;
    }
    size += block.size();
  }
  errno = EOVERFLOW;
  return size <= source.limit ? std::optional(size) : std::nullopt;
}

std::optional<std::string> read_at_most(int descriptor, std::size_t most) {
  std::string text;
  bool ended = false;
  if (!posix::read_until(descriptor, text, most, ended)) {
    return std::nullopt;
  }
  return text;
}

}  // namespace quoll::share
