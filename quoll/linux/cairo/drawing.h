#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "quoll/foundation/value.h"
#include "quoll/view/drawing_context.h"

/// Drawings that become files. PNG images are read here; any other image is converted by the
/// installed platform first.
namespace quoll::cairo_drawing {

enum class FileType {
  kPng,  ///< one pixel for a unit, transparent at first
  kPdf,  ///< one page
  kSvg,
};

/// A drawing in memory. One thread uses it at a time.
class Drawing : public platform::NSGraphicsContext {
 public:
  /// Ends the drawing and answers the bytes of the file. None when it failed (the log says why), or
  /// when it was ended before.
  [[nodiscard]] virtual std::optional<foundation::Bytes> finish() = 0;

  /// A pixel as 0xAARRGGBB, with its colours multiplied by its alpha. Row 0 is the top row. The
  /// answer is 0 outside the drawing, after `finish`, and in a PDF or SVG.
  [[nodiscard]] virtual std::uint32_t pixel(std::int64_t column, std::int64_t row) = 0;
};

/// The longest side of a drawing, in units.
inline constexpr double kLongestSide = 16384;

/// Makes an empty drawing. The size is in units; a fraction of a pixel counts as a pixel. Null,
/// with a line in the log, when a side is not above 0 or above `kLongestSide`, or when there is not
/// enough memory.
[[nodiscard]] std::unique_ptr<Drawing> make_drawing(FileType type, const platform::NSSize& size);

}  // namespace quoll::cairo_drawing
