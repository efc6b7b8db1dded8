#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "quoll/foundation/object.h"
#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// The file types of `representationUsingType:properties:` that the system asks for, under the
/// platform's numbers.
enum class BitmapImageFileType : unsigned {
  NSBitmapImageFileTypeTIFF = 0,
  NSBitmapImageFileTypePNG = 4,
};

/// An image object: the bytes of an image file that can be read, with the size of its first image
/// as a viewer shows it. It never changes but for the mark below, which belongs to whoever made it.
class NSImage final : public foundation::Object {
 public:
  NSImage(foundation::Bytes data, std::int64_t width, std::int64_t height)
      : data_(std::move(data)), width_(width), height_(height) {}

  /// `initWithData:`: null when no reader takes the bytes.
  [[nodiscard]] static std::shared_ptr<NSImage> initWithData(const foundation::Bytes& data);

  /// `TIFFRepresentation`: the pixels as a TIFF file; none when that fails.
  [[nodiscard]] std::optional<foundation::Bytes> TIFFRepresentation() const;

  [[nodiscard]] foundation::Bytes data() const { return data_; }
  /// In pixels.
  [[nodiscard]] std::int64_t width() const { return width_; }
  [[nodiscard]] std::int64_t height() const { return height_; }

  /// True when the image's origin is at the top left.
  bool flipped = false;

  [[nodiscard]] std::string_view class_name() const override { return "NSImage"; }
  [[nodiscard]] std::string description() const override;

 private:
  foundation::Bytes data_;
  std::int64_t width_;
  std::int64_t height_;
};

/// The platform's readers and writers of image files. Any thread may call. Bytes that no reader
/// takes, that are damaged, or that claim more pixels than the limit give nothing; the log says
/// why.
class Images : public foundation::Polymorphic {
 public:
  struct Size {
    std::int64_t width = 0;
    std::int64_t height = 0;
  };

  /// The size of the first image, turned upright, in pixels.
  [[nodiscard]] virtual std::optional<Size> size(const foundation::Bytes& file) = 0;

  /// The first image as a file of the other type: 8 or 16 bits, grey, alpha and the colour profile
  /// are kept, CMYK becomes RGB, the pixels stand upright.
  [[nodiscard]] virtual std::optional<foundation::Bytes> convert(const foundation::Bytes& file,
                                                                 BitmapImageFileType type) = 0;
};

/// `NSBitmapImageRep`: the first image of a file, ready to be written in another type.
class NSBitmapImageRep {
 public:
  /// `imageRepWithData:`: none when the bytes are absent or empty. The pixels are read when they
  /// are written.
  [[nodiscard]] static std::optional<NSBitmapImageRep> imageRepWithData(
      std::optional<foundation::Bytes> data);

  /// `representationUsingType:properties:` without properties; none when that fails.
  [[nodiscard]] std::optional<foundation::Bytes> representationUsingType(
      BitmapImageFileType type) const;

 private:
  explicit NSBitmapImageRep(foundation::Bytes data) : data_(std::move(data)) {}

  foundation::Bytes data_;
};

}  // namespace quoll::platform
