// Reads any bytes as an image file of one format (QUOLL_FUZZ_FORMAT). It is refused, or all its
// rows are read, and are the same when they are read again and when they are written as PNG and as
// TIFF and read. No more memory is asked for at one time than may be held.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "apps/image-helper/codecs/readers.h"
#include "apps/image-helper/codecs/writers.h"
#include "fuzz/memory_budget.h"
#include "fuzz/pixels.h"
#include "fuzz/require.h"

namespace {

using namespace quoll::image_helper;
using quoll::fuzz::Pixels;
using quoll::fuzz::require;

/// In bytes: only pictures up to this size are read, so that inputs that claim to be large end
/// quickly.
constexpr std::size_t kMostRead = std::size_t{1} << 20;

void check_picture(const Picture& picture) {
  require(picture.width > 0 && picture.height > 0);
  require(std::uint64_t{picture.width} * picture.height <= kMostPixels);
  require(picture.channels >= 1 && picture.channels <= 4);
  require(picture.bits == 8 || picture.bits == 16);
  require(picture.orientation == 1);
}

std::unique_ptr<Pixels> read_all(ByteView file) {
  const auto source = open_picture(file);
  const Picture before = source->picture();
  check_picture(before);
  if (std::uint64_t{before.row_bytes()} * before.height > kMostRead) {
    return nullptr;
  }
  auto pixels = std::make_unique<Pixels>(*source);
  require(source->picture().width == before.width && source->picture().height == before.height);
  return pixels;
}

void check(ByteView file) {
  std::unique_ptr<Pixels> pixels;
  try {
    pixels = read_all(file);
  } catch (const ImageError& refused) {
    require(*refused.what() != '\0');
  } catch (const std::bad_alloc&) {
    // It needs more memory than the budget allows; the helper refuses it too.
  }
  if (pixels) {
    require(read_all(file)->is_as(*pixels));
    check_written(*pixels, write_png);
    check_written(*pixels, write_tiff);
  }
}

bool is_of_the_format(std::string_view bytes) {
  constexpr std::string_view kFormat = QUOLL_FUZZ_FORMAT;
  constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n";
  return kFormat == "png"    ? bytes.starts_with(kPng)
         : kFormat == "jpeg" ? bytes.starts_with("\xff\xd8\xff")
         : kFormat == "gif"  ? bytes.starts_with("GIF8")
         : kFormat == "webp" ? bytes.starts_with("RIFF")
                             : bytes.starts_with("II") || bytes.starts_with("MM");
}

std::uint32_t checksum(std::span<const std::uint8_t> bytes) {
  std::uint32_t sum = 0xffffffff;
  for (const std::uint8_t byte : bytes) {
    sum ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      sum = sum >> 1U ^ ((sum & 1U) != 0 ? 0xedb88320U : 0);
    }
  }
  return ~sum;
}

/// The PNG with correct checksums, so that the code behind the check is reached.
std::vector<std::uint8_t> with_right_checksums(ByteView file) {
  std::vector<std::uint8_t> mended(file.begin(), file.end());
  constexpr std::size_t kAround = 12;
  for (std::size_t at = 8; mended.size() - at >= kAround;) {
    const std::size_t length = std::size_t{mended[at]} << 24U | std::size_t{mended[at + 1]} << 16U |
                               std::size_t{mended[at + 2]} << 8U | mended[at + 3];
    if (length > mended.size() - at - kAround) {
      break;
    }
    const std::uint32_t sum = checksum({mended.data() + at + 4, length + 4});
    for (unsigned i = 0; i < 4; ++i) {
      mended[at + 8 + length + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    }
    at += length + kAround;
  }
  return mended;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView file(data, size);
  if (!is_of_the_format({reinterpret_cast<const char*>(data), size})) {
    return 0;
  }
  const quoll::fuzz::MemoryBudget budget;
  check(file);
  if (std::string_view(QUOLL_FUZZ_FORMAT) == "png") {
    check(with_right_checksums(file));
  }
  return 0;
}
