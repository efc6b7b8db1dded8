#include "quoll/platform/images.h"

#include "quoll/platform/desktop.h"

namespace quoll::platform {

using foundation::Bytes;

std::shared_ptr<NSImage> NSImage::initWithData(const Bytes& data) {
  const auto size = current_desktop()->images->size(data);
  return size ? std::make_shared<NSImage>(data, size->width, size->height) : nullptr;
}

std::optional<Bytes> NSImage::TIFFRepresentation() const {
  return current_desktop()->images->convert(data_, BitmapImageFileType::NSBitmapImageFileTypeTIFF);
}

std::string NSImage::description() const {
  return "NSImage " + std::to_string(width_) + "x" + std::to_string(height_);
}

std::optional<NSBitmapImageRep> NSBitmapImageRep::imageRepWithData(std::optional<Bytes> data) {
  if (!data || data->empty()) {
    return std::nullopt;
  }
  return NSBitmapImageRep(std::move(*data));
}

std::optional<Bytes> NSBitmapImageRep::representationUsingType(BitmapImageFileType type) const {
  return current_desktop()->images->convert(data_, type);
}

}  // namespace quoll::platform
