#include "apps/share/request/received_bytes.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "apps/share/interruption.h"
#include "apps/share/request/image_signature.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_contents.h"

namespace quoll::share {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;
/// A larger image is shared as a file.
constexpr std::size_t kLargestImage = std::size_t{256} << 20;

/// Reads as `posix::read_until` does, but fails with EINTR when an `Interruption` has come: whoever
/// writes to a pipe may take any time.
bool read_on(int descriptor, std::string& block, std::size_t enough, bool& ended,
             std::optional<std::chrono::milliseconds> read_timeout = std::nullopt) {
  constexpr std::chrono::milliseconds kLook{100};
  const auto piece = read_timeout ? std::min(kLook, *read_timeout) : kLook;
  auto waited = std::chrono::milliseconds::zero();
  while (!Interruption::has_come()) {
    const std::size_t before = block.size();
    if (posix::read_until(descriptor, block, enough, ended, piece)) {
      return true;
    }
    waited = block.size() == before ? waited + piece : std::chrono::milliseconds::zero();
    if (errno != ETIMEDOUT || (read_timeout && waited >= *read_timeout)) {
      return false;
    }
  }
  errno = EINTR;
  return false;
}

}  // namespace

posix::UniqueFd make_image_file(std::string_view bytes) {
  posix::UniqueFd file = image_helper::make_memory_file();
  if (file && !posix::write_all(file.get(), bytes)) {
    file.reset();
  }
  return file;
}

std::optional<ReceivedBytes> read_beginning(const ByteSource& source) {
  ReceivedBytes received;
  const auto read_block = [&](std::string& block, std::size_t enough) {
    return read_on(source.descriptor, block, enough, received.is_whole, source.read_timeout);
  };
  if (!read_block(received.beginning, kBlock)) {
    return std::nullopt;
  }
  received.size = received.beginning.size();
  if (!begins_as_image(received.beginning)) {
    return received;
  }
  received.image = make_image_file(received.beginning);
  const std::size_t enough = std::min(kLargestImage, source.limit);
  std::string block;
  while (received.image && !received.is_whole && received.size < enough) {
    block.clear();
    if (!read_block(block, std::min(kBlock, enough - received.size)) ||
        !posix::write_all(received.image.get(), block)) {
      received.image.reset();
    }
    received.size += block.size();
  }
  return received.image ? std::optional(std::move(received)) : std::nullopt;
}

std::optional<std::size_t> write_received(const ReceivedBytes& received, const ByteSource& source,
                                          int target) {
  bool ended = received.is_whole;
  std::size_t size = received.size;
  if (received.image) {
    if (const auto failure = posix::copy_contents(received.image.get(), target)) {
      errno = failure->number;
      return std::nullopt;
    }
    lseek(target, 0, SEEK_END);
  } else if (!posix::write_all(target, received.beginning)) {
    return std::nullopt;
  }
  std::string block;
  while (!ended && size <= source.limit) {
    block.clear();
    if (!read_on(source.descriptor, block, kBlock, ended, source.read_timeout) ||
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
  if (!read_on(descriptor, text, most, ended)) {
    return std::nullopt;
  }
  return text;
}

}  // namespace quoll::share
