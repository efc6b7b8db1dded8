#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "quoll/foundation/value.h"
#include "quoll/view/drawing_context.h"

/// Drawings that become files. Images in them are read here when they are PNG, and by the installed
/// platform otherwise.
namespace quoll::cairo_drawing {

enum class FileType {
  kPng,  ///< a pixel a unit, transparent at first
  kPdf,  ///< one page
  kSvg,
};

/// A drawing of its own. It belongs to one thread at a time.
class Drawing : public platform::NSGraphicsContext {
 public:
  /// Ends the drawing: the bytes of the file. None when it failed (then the log says why) or has
  /// ended before.
  [[nodiscard]] virtual std::optional<foundation::Bytes> finish() = 0;

  /// A pixel as 0xAARRGGBB, its colours multiplied by its alpha; row 0 is the top one. 0 outside of
  /// the drawing, when it has ended, and in one that has no pixels.
  [[nodiscard]] virtual std::uint32_t pixel(std::int64_t column, std::int64_t row) = 0;
};

/// The longest side of a drawing.
inline constexpr double kLongestSide = 16384;

/// An empty drawing of that size in units; parts of pixels count as pixels. Null when a side is not
/// above 0 or is too long, or when there is no memory for it; then the log says so.
[[nodiscard]] std::unique_ptr<Drawing> make_drawing(FileType type, const platform::NSSize& size);

}  // namespace quoll::cairo_drawing
