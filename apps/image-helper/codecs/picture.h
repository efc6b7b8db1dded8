#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace quoll::image_helper {

/// The bytes of a file. They must outlive everything that reads them.
using ByteView = std::span<const unsigned char>;

/// Why a file cannot be read as a picture, in one line for people: it is not an image, damaged or
/// too large.
class ImageError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The limit for pixels: more than any camera makes, and few enough that every number below fits in
/// 32 bits. It is checked before anything is allocated.
inline constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 28;
/// The limit in bytes for the pixels that are in memory at one time. Most pictures pass row by row;
/// pictures that are turned, interlaced or tiled are held as a whole.
inline constexpr std::uint64_t kMostHeldBytes = std::uint64_t{1} << 30;

/// The colour space of a PNG without a profile, in PNG's own units.
struct PngColours {
  std::optional<int> srgb_intent;
  std::optional<std::int32_t> gamma;
  std::optional<std::array<std::int32_t, 8>> primaries;  ///< white, red, green, blue: x and y
};

/// What is known about a picture before its pixels are read.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// 1: grey; 2: grey and alpha; 3: RGB; 4: RGBA. The colours are not multiplied by alpha.
  unsigned channels = 3;
  /// The bits of a sample: 8, or 16 with the high byte first.
  unsigned bits = 8;
  /// How the stored rows are turned, by EXIF's numbers: 1 is upright, 2 to 8 are mirrored or
  /// turned.
  unsigned orientation = 1;
  /// The ICC profile; empty when there is none.
  std::vector<unsigned char> profile;
  PngColours colours;

  [[nodiscard]] std::size_t pixel_bytes() const { return std::size_t{channels} * bits / 8; }
  [[nodiscard]] std::size_t row_bytes() const { return width * pixel_bytes(); }
  /// False when there is no profile, when it is damaged, and when it is made for other channels. A
  /// writer may refuse the whole picture for one that does not fit.
  [[nodiscard]] bool has_fitting_profile() const;
};

/// Raises `ImageError` when a picture of this size is empty or has too many pixels.
void check_size(std::uint64_t width, std::uint64_t height);

/// A picture whose rows are read once, from the top.
///
/// The last row is answered only when the file is complete to its end. A damaged file raises
/// `ImageError` before that.
class PictureSource {
 public:
  PictureSource() = default;
  PictureSource(const PictureSource&) = delete;
  PictureSource& operator=(const PictureSource&) = delete;
  virtual ~PictureSource() = default;

  [[nodiscard]] const Picture& picture() const { return picture_; }
  /// Fills `row` with the next `row_bytes()` bytes. Call it at most `height` times.
  virtual void read(unsigned char* row) = 0;
  /// Removes a profile that is damaged, or that was made for other channels than the picture has
  /// (for instance, when a CMYK picture became RGB).
  void drop_unfitting_profile();

 protected:
  Picture picture_;
};

/// All pixels of a picture. The constructors raise `ImageError` when they need more than
/// `kMostHeldBytes`.
class HeldPicture final : public PictureSource {
 public:
  /// Pixels that are all zero, to be filled by `row`.
  explicit HeldPicture(Picture picture);
  /// Reads the remaining rows of `source`.
  explicit HeldPicture(PictureSource& source);

  [[nodiscard]] unsigned char* row(std::uint32_t y) {
    return pixels_.data() + y * picture_.row_bytes();
  }
  void read(unsigned char* row) override;

 private:
  std::vector<unsigned char> pixels_;
  std::uint32_t next_ = 0;
};

}  // namespace quoll::image_helper
