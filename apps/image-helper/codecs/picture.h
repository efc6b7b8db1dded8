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

/// The bytes of a file, which live as long as whatever reads them.
using File = std::span<const unsigned char>;

/// Why there is no picture, in one line for people: not an image, damaged, too large.
class Refused final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// More pixels than any camera makes, and few enough that every count below fits in 32 bits. Looked
/// at before anything is allocated.
inline constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 28;
/// What the pixels that are held at one time may take. Most pictures pass row by row and hold none;
/// those that are turned, interlaced or tiled are held.
inline constexpr std::uint64_t kMostHeldBytes = std::uint64_t{1} << 30;

/// The colours of a PNG that says so without a profile, in PNG's own units.
struct PngColours {
  std::optional<int> srgb_intent;
  std::optional<std::int32_t> gamma;
  std::optional<std::array<std::int32_t, 8>> primaries;  ///< white, red, green, blue: x and y
};

/// What is known of a picture before its pixels.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA; alpha is not multiplied in.
  unsigned channels = 3;
  /// A sample: 8, or 16 with the high byte first.
  unsigned bits = 8;
  /// How the rows stand, as EXIF numbers it: 1 upright, 2 to 8 mirrored or turned.
  unsigned orientation = 1;
  /// An ICC profile; empty when there is none.
  std::vector<unsigned char> profile;
  PngColours colours;

  [[nodiscard]] std::size_t pixel_bytes() const { return std::size_t{channels} * bits / 8; }
  [[nodiscard]] std::size_t row_bytes() const { return width * pixel_bytes(); }
};

/// Raises `Refused` when a picture of this size is empty or beyond the limit.
void check_size(std::uint64_t width, std::uint64_t height);

/// A picture with its rows, which are read once, from the top.
///
/// The last row comes only when the file is whole to its end; before that a damaged file raises
/// `Refused`.
class PictureSource {
 public:
  PictureSource() = default;
  PictureSource(const PictureSource&) = delete;
  PictureSource& operator=(const PictureSource&) = delete;
  virtual ~PictureSource() = default;

  [[nodiscard]] const Picture& picture() const { return picture_; }
  /// Fills `row` with the next `row_bytes()` bytes. Called at most `height` times.
  virtual void read(unsigned char* row) = 0;
  /// Forgets a profile that is damaged or made for other channels than these, as that of a CMYK
  /// picture which became RGB.
  void drop_unfitting_profile();

 protected:
  Picture picture_;
};

/// The pixels of a whole picture. Making it raises `Refused` when they are more than may be held.
class HeldPicture final : public PictureSource {
 public:
  /// Zeroed pixels, to be filled in with `row`.
  explicit HeldPicture(Picture picture);
  /// The rest of `source`.
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
