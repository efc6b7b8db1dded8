// Turns any pixels in any way. They are turned as EXIF says, and are the same when they are written
// as PNG and as TIFF and read again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/image-helper/codecs/upright.h"
#include "apps/image-helper/codecs/writers.h"
#include "fuzz/pixels.h"
#include "fuzz/require.h"
#include "fuzz/script.h"

namespace {

using namespace quoll::image_helper;
using quoll::fuzz::Pixels;
using quoll::fuzz::require;

/// Makes flat parts and noise alternately, so that both compressors are used.
std::unique_ptr<Pixels> make_pixels(quoll::fuzz::Script& script) {
  Picture picture;
  picture.width = script.choice(100) + 1;
  picture.height = script.choice(100) + 1;
  if (script.choice(64) == 63) {
    picture.height *= 32;  // more than one batch of the compressor
  }
  picture.channels = script.choice(4) + 1;
  picture.bits = script.choice(2) == 0 ? 8 : 16;
  picture.orientation = script.choice(8) + 1;
  const std::string_view profile = script.text(200);
  picture.profile.assign(profile.begin(), profile.end());
  std::uint32_t noise = script.number<std::uint32_t>();
  const std::string_view parts = script.rest();
  std::vector<unsigned char> bytes(picture.row_bytes() * picture.height);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::size_t part = i * parts.size() / bytes.size();
    const auto level = static_cast<unsigned char>(parts.empty() ? 0 : parts[part]);
    noise = noise * 1664525 + 1013904223;
    bytes[i] = level % 2 == 0 ? level : static_cast<unsigned char>(noise >> 24U);
  }
  return std::make_unique<Pixels>(std::move(picture), std::move(bytes));
}

/// The place in the stored picture of the pixel that is shown at `x`, `y`.
std::pair<std::uint32_t, std::uint32_t> stored_place(const Picture& stored, std::uint32_t x,
                                                     std::uint32_t y) {
  const std::uint32_t right = stored.width - 1;
  const std::uint32_t bottom = stored.height - 1;
  switch (stored.orientation) {
    case 2:
      return {right - x, y};
    case 3:
      return {right - x, bottom - y};
    case 4:
      return {x, bottom - y};
    case 5:
      return {y, x};
    case 6:
      return {y, bottom - x};
    case 7:
      return {right - y, bottom - x};
    case 8:
      return {right - y, x};
    default:
      return {x, y};
  }
}

void check_turned(const Pixels& turned, const Pixels& stored) {
  const std::size_t pixel = stored.picture().pixel_bytes();
  const bool swapped = stored.picture().orientation >= 5;
  require(turned.picture().width == (swapped ? stored.picture().height : stored.picture().width));
  require(turned.bytes().size() == stored.bytes().size());
  for (std::uint32_t y = 0; y < turned.picture().height; ++y) {
    for (std::uint32_t x = 0; x < turned.picture().width; ++x) {
      const auto [column, line] = stored_place(stored.picture(), x, y);
      const auto* const is = turned.bytes().data() + y * turned.picture().row_bytes() + x * pixel;
      const auto* const was =
          stored.bytes().data() + line * stored.picture().row_bytes() + column * pixel;
      require(std::equal(is, is + pixel, was));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quoll::fuzz::Script script({data, size});
  auto stored = make_pixels(script);
  const Pixels untouched(stored->picture(), stored->bytes());
  const auto source = upright(std::move(stored));
  Pixels turned(*source);
  check_turned(turned, untouched);
  check_written(turned, write_png);
  check_written(turned, write_tiff);
  return 0;
}
