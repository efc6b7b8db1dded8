#include "quoll/linux/cairo/image_surface.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

#include "quoll/platform/log.h"

namespace quoll::cairo_drawing {

namespace {

using foundation::Bytes;

constexpr std::array<unsigned char, 8> kPngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
/// A PNG file has the width at this offset and the height behind it, four bytes each.
constexpr std::size_t kPngSizeOffset = 16;
constexpr std::size_t kPngHeadLength = kPngSizeOffset + 8;
/// The limit of the image helper too. cairo has a limit for each side.
constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 28;

std::uint32_t number_at(const Bytes& file, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    number = number << 8 | file[offset + i];
  }
  return number;
}

bool is_png(const Bytes& file) {
  return file.size() >= kPngHeadLength &&
         std::equal(kPngSignature.begin(), kPngSignature.end(), file.begin());
}

/// Gives cairo's PNG reader its next bytes. Fails when there are not enough.
cairo_status_t read_some(void* closure, unsigned char* out, unsigned length) {
  auto& left = *static_cast<std::span<const unsigned char>*>(closure);
  if (length > left.size()) {
    return CAIRO_STATUS_READ_ERROR;
  }
  std::copy_n(left.begin(), length, out);
  left = left.subspan(length);
  return CAIRO_STATUS_SUCCESS;
}

Handle<cairo_surface_t> read_png(const Bytes& file) {
  const std::uint64_t pixels =
      std::uint64_t{number_at(file, kPngSizeOffset)} * number_at(file, kPngSizeOffset + 4);
  if (pixels > kMostPixels) {
    platform::log("drawing: %@", "an image has more pixels than the limit");
    return nullptr;
  }
  std::span<const unsigned char> left(file);
  Handle<cairo_surface_t> surface(cairo_image_surface_create_from_png_stream(read_some, &left));
  const cairo_status_t status = cairo_surface_status(surface.get());
  if (status != CAIRO_STATUS_SUCCESS) {
    platform::log("drawing: an image cannot be read: %@", cairo_status_to_string(status));
    return nullptr;
  }
  return surface;
}

}  // namespace

Handle<cairo_surface_t> read_image(const platform::NSImage& image) {
  Bytes file = image.data();
  if (is_png(file)) {
    return read_png(file);
  }
  const auto pixels = platform::NSBitmapImageRep::imageRepWithData(std::move(file));
  const auto png =
      pixels
          ? pixels->representationUsingType(platform::BitmapImageFileType::NSBitmapImageFileTypePNG)
          : std::nullopt;
  if (!png || !is_png(*png)) {
    platform::log("drawing: %@", "an image cannot be read");
    return nullptr;
  }
  return read_png(*png);
}

}  // namespace quoll::cairo_drawing
