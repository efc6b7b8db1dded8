#include "quoll/host/received_bytes.h"

#include "quoll/host/file_handle.h"
#include "quoll/host/image_signature.h"

namespace quoll::host {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;
/// Beyond this an image is shared as the file that it is.
constexpr std::size_t kLargestImage = std::size_t{256} << 20;

}  // namespace

std::optional<ReceivedBytes> receive(int descriptor) {
  ReceivedBytes received;
  if (!read_until(descriptor, received.beginning, kBlock, received.is_whole)) {
    return std::nullopt;
  }
  if (!received.is_whole && begins_as_image(received.beginning) &&
      !read_until(descriptor, received.beginning, kLargestImage, received.is_whole)) {
    return std::nullopt;
  }
  return received;
}

bool write_through(const ReceivedBytes& received, int source, int target) {
  bool ended = received.is_whole;
  if (!write_all(target, received.beginning)) {
    return false;
  }
  std::string block;
  while (!ended) {
    block.clear();
    if (!read_until(source, block, kBlock, ended) || !write_all(target, block)) {
      return false;
    }
  }
  return true;
}

std::optional<std::string> receive_text(int descriptor, std::size_t enough) {
  std::string text;
  bool ended = false;
  if (!read_until(descriptor, text, enough, ended)) {
    return std::nullopt;
  }
  return text;
}

}  // namespace quoll::host
