#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "quoll/linux/cairo/drawing.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"

namespace quoll::test {

inline constexpr platform::Colour kRed{1, 0, 0, 1};
inline constexpr platform::Colour kGreen{0, 1, 0, 1};
inline constexpr platform::Colour kBlue{0, 0, 1, 1};
inline constexpr std::uint32_t kRedPixel = 0xFFFF0000;
inline constexpr std::uint32_t kGreenPixel = 0xFF00FF00;
inline constexpr std::uint32_t kBluePixel = 0xFF0000FF;

/// A drawing in pixels, and a log that is kept.
class PixelTest : public testing::Test {
 protected:
  /// The drawing, row by row from the top: a letter for each of the colours above, '.' for nothing
  /// and '?' for everything else.
  static std::vector<std::string> rows(cairo_drawing::Drawing& drawing, int width, int height) {
    std::vector<std::string> result;
    for (int row = 0; row < height; ++row) {
      std::string letters;
      for (int column = 0; column < width; ++column) {
        letters += letter(drawing.pixel(column, row));
      }
      result.push_back(letters);
    }
    return result;
  }

  static std::unique_ptr<cairo_drawing::Drawing> pixels(double width, double height) {
    auto drawing = make_drawing(cairo_drawing::FileType::kPng, {width, height});
    EXPECT_NE(drawing, nullptr);
    return drawing;
  }

  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
  platform::ScopedDesktop desktop_{platform::Desktop{.log = log_}};

 private:
  static char letter(std::uint32_t pixel) {
    switch (pixel) {
      case 0:
        return '.';
      case kRedPixel:
        return 'r';
      case kGreenPixel:
        return 'g';
      case kBluePixel:
        return 'b';
      default:
        return '?';
    }
  }
};

using Rows = std::vector<std::string>;

}  // namespace quoll::test
