#include <limits>

#include "tests/cairo/pixels.h"

namespace quoll::test {
namespace {

using cairo_drawing::Drawing;
using platform::NSRect;

constexpr int kSide = 100;
constexpr NSRect kAll{{0, 0}, {kSide, kSide}};

/// The pixels that something was drawn on.
struct Ink {
  int left = kSide;
  int right = -1;
  int top = kSide;
  int bottom = -1;
  int pixels = 0;
  std::uint32_t strongest = 0;
};

class TextDrawing : public PixelTest {
 protected:
  static Ink ink_of(Drawing& drawing) {
    Ink ink;
    for (int row = 0; row < kSide; ++row) {
      for (int column = 0; column < kSide; ++column) {
        if (const std::uint32_t pixel = drawing.pixel(column, row); pixel != 0) {
          ink.left = std::min(ink.left, column);
          ink.right = std::max(ink.right, column);
          ink.top = std::min(ink.top, row);
          ink.bottom = std::max(ink.bottom, row);
          ++ink.pixels;
          ink.strongest = std::max(ink.strongest, pixel);
        }
      }
    }
    return ink;
  }

  static Ink ink_of(std::string_view text, const NSRect& rect = kAll,
                    const platform::TextStyle& style = {.size = 20}) {
    const auto drawing = pixels(kSide, kSide);
    drawing->draw_text(text, rect, style);
    return ink_of(*drawing);
  }
};

TEST_F(TextDrawing, BeginsAtTheUpperEdge) {
  const Ink ink = ink_of("EEE", {{10, 30}, {80, 60}});
  EXPECT_GT(ink.pixels, 50);
  EXPECT_GE(ink.left, 10);
  EXPECT_LT(ink.left, 16);
  EXPECT_GE(ink.top, 30);
  EXPECT_LT(ink.bottom, 60);
}

TEST_F(TextDrawing, StandsUprightInEitherKindOfCoordinates) {
  // The stroke of an L is at its foot.
  const auto expected = pixels(kSide, kSide);
  expected->draw_text("L", {{10, 20}, {50, 40}}, {.size = 30});
  const auto turned = pixels(kSide, kSide);
  turned->translate(0, kSide);
  turned->flip();
  turned->draw_text("L", {{10, kSide - 20 - 40}, {50, 40}}, {.size = 30});
  EXPECT_FALSE(turned->isFlipped());
  const Ink ink = ink_of(*expected);
  const Ink other = ink_of(*turned);
  EXPECT_EQ(ink.top, other.top);
  EXPECT_EQ(ink.bottom, other.bottom);
  EXPECT_EQ(ink.left, other.left);
  EXPECT_EQ(ink.right, other.right);
  for (Drawing* const drawing : {expected.get(), turned.get()}) {
    EXPECT_NE(drawing->pixel(ink.right - 1, ink.bottom - 1), 0U);
    EXPECT_EQ(drawing->pixel(ink.right - 1, ink.top + 1), 0U);
  }
}

TEST_F(TextDrawing, HasItsSizeAndColour) {
  const Ink small = ink_of("H", kAll, {.size = 10});
  const Ink large = ink_of("H", kAll, {.size = 40, .colour = kBlue});
  EXPECT_NEAR(large.bottom - large.top, 4 * (small.bottom - small.top), 8);
  EXPECT_EQ(large.strongest, kBluePixel);
  EXPECT_EQ(ink_of("H", kAll, {.size = 40}).strongest, 0xFF000000) << "black, unless it is said";
  const Ink plain = ink_of("H", kAll, {});
  const Ink twelve = ink_of("H", kAll, {.size = 12});
  EXPECT_EQ(plain.pixels, twelve.pixels) << "12, unless it is said";
  EXPECT_EQ(plain.bottom, twelve.bottom);
}

TEST_F(TextDrawing, IsBrokenAtTheWidth) {
  const std::string words = "aa aa aa aa";
  const Ink wide = ink_of(words, {{0, 0}, {1000, 100}}, {.size = 10});
  const Ink narrow = ink_of(words, {{0, 0}, {20, 100}}, {.size = 10});
  EXPECT_LT(wide.bottom, 15);
  EXPECT_GT(narrow.bottom, 30) << "a line a word";
  EXPECT_LE(narrow.right, 20);
  const Ink letters = ink_of("aaaaaaaaaaaaaaaa", {{0, 0}, {20, 100}}, {.size = 10});
  EXPECT_GT(letters.bottom, 30) << "inside a word when there is no other place";
  EXPECT_LE(letters.right, 20);
  EXPECT_GT(ink_of("a\na\na", kAll, {.size = 10}).bottom, 25) << "and where the text says so";
}

TEST_F(TextDrawing, IsCutOffBelowTheRectangle) {
  const Ink ink = ink_of("a a a a a a a a a a a a a a", {{5, 10}, {15, 22}}, {.size = 10});
  EXPECT_GT(ink.pixels, 0);
  EXPECT_LT(ink.bottom, 32);
  EXPECT_GE(ink.top, 10);
  EXPECT_LT(ink.right, 20);
}

TEST_F(TextDrawing, LeavesTheDrawingAsItWas) {
  const auto drawing = pixels(kSide, kSide);
  drawing->draw_text("text", {{10, 10}, {20, 20}}, {});
  drawing->fill_rect(kAll, kRed);
  EXPECT_EQ(drawing->pixel(0, 0), kRedPixel);
  EXPECT_EQ(drawing->pixel(99, 99), kRedPixel);
}

TEST_F(TextDrawing, LeavesNothingForTheNextFigure) {
  const auto drawing = pixels(kSide, kSide);
  drawing->draw_text("text", {{0, 0}, {50, 20}}, {.colour = kRed});
  drawing->fill_rounded_rect({{70, 70}, {20, 20}}, 5, kGreen);
  EXPECT_EQ(drawing->pixel(80, 80), kGreenPixel);
  for (int row = 20; row < 70; ++row) {
    for (int column = 0; column < kSide; ++column) {
      ASSERT_EQ(drawing->pixel(column, row), 0U) << "no corner reaches back to where the text was";
    }
  }
}

TEST_F(TextDrawing, WithoutASizeOrAPlaceIsNone) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const double size : {0.0, -5.0, kNaN}) {
    EXPECT_EQ(ink_of("text", kAll, {.size = size}).pixels, 0);
  }
  EXPECT_EQ(ink_of("").pixels, 0);
  EXPECT_EQ(ink_of("text", {{0, 0}, {0, 50}}).pixels, 0);
  EXPECT_EQ(ink_of("text", {{0, 0}, {50, kNaN}}).pixels, 0);
  EXPECT_EQ(ink_of("text", {{200, 0}, {50, 50}}).pixels, 0);
}

TEST_F(TextDrawing, TakesAnyBytes) {
  const std::string replacement = "\xEF\xBF\xBD";
  const struct {
    std::string text;
    std::string alike;
    const char* reason;
  } rows[] = {
      {"a\xff"
       "b",
       "a" + replacement + "b", "a byte that is not UTF-8"},
      {"a\xc3", "a" + replacement, "cut inside a character"},
      {std::string("a\0b", 3), "a" + replacement + "b", "a null byte does not end it"},
  };
  for (const auto& row : rows) {
    const Ink ink = ink_of(row.text);
    const Ink alike = ink_of(row.alike);
    EXPECT_EQ(ink.pixels, alike.pixels) << row.reason;
    EXPECT_EQ(ink.right, alike.right) << row.reason;
    EXPECT_GT(ink.right, ink_of("a").right) << row.reason;
  }
  EXPECT_GT(ink_of("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d \xe6\x97\xa5").pixels, 0) << "any script";
}

TEST_F(TextDrawing, TakesAnyLengthAndSize) {
  const std::string word(5'000'000, 'x');
  std::string words;
  for (int i = 0; i < 1'000'000; ++i) {
    words += "ab cd\n";
  }
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const std::string_view text : {std::string_view(word), std::string_view(words)}) {
    EXPECT_GT(ink_of(text).pixels, 100);
    EXPECT_GT(ink_of(text, {{0, 0}, {kInfinity, kInfinity}}).pixels, 100);
  }
  const NSRect place{{-550, -2500}, {8000, 8000}};
  EXPECT_EQ(ink_of("H", place, {.size = 4096}).pixels, kSide * kSide)
      << "inside the stroke of a letter of the largest size";
  for (const double size : {4096.5, 1e30, kInfinity}) {
    EXPECT_EQ(ink_of("H", place, {.size = size}).pixels, 0) << "no font is that large";
  }
  EXPECT_EQ(ink_of("H", kAll, {.size = 1.0 / 2048}).pixels, 0) << "nor that small";
}

TEST_F(TextDrawing, TheLargestSizeCountsInPixelsToo) {
  constexpr struct {
    double scale;
    double size;
    bool possible;
  } rows[] = {{2, 2048, true}, {2, 2049, false}, {100, 3.2, true}, {100, 3.3, false}};
  for (const auto& row : rows) {
    const auto drawing = pixels(kSide, kSide);
    drawing->scale(row.scale, row.scale);
    drawing->draw_text("H", {{-0.1 * row.size, -0.6 * row.size}, {4 * row.size, 4 * row.size}},
                       {.size = row.size});
    EXPECT_EQ(ink_of(*drawing).pixels > 0, row.possible) << row.scale << ' ' << row.size;
    EXPECT_TRUE(drawing->finish()) << "one text that is too large does not end the drawing";
  }
}

TEST_F(TextDrawing, LongTextsGoOnWithoutAGap) {
  // Longer than what is set at once, in lines of one word each.
  std::string words;
  for (int i = 0; i < 400; ++i) {
    words += "\xC3\xA4\xC3\xA4 ";
  }
  const auto drawing = pixels(20, 4000);
  drawing->draw_text(words, {{0, 0}, {15, 4000}}, {.size = 8});
  std::vector<int> tops;
  bool before = false;
  for (int row = 0; row < 4000; ++row) {
    bool inked = false;
    for (int column = 0; column < 20; ++column) {
      inked = inked || drawing->pixel(column, row) != 0;
    }
    if (inked && !before) {
      tops.push_back(row);
    }
    before = inked;
  }
  ASSERT_EQ(tops.size(), 400U) << "a line a word";
  for (std::size_t i = 1; i < tops.size(); ++i) {
    EXPECT_NEAR(tops[i] - tops[i - 1], tops[1] - tops[0], 1) << "line " << i;
  }
}

TEST_F(TextDrawing, ATextHas256KiB) {
  // Empty lines, so low that all of them find room, and a letter behind them.
  const auto is_shown = [](std::size_t lines) {
    const auto drawing = make_drawing(cairo_drawing::FileType::kSvg, {10, 16384});
    drawing->draw_text(std::string(lines, '\n') + "x", {{0, 0}, {10, 16384}}, {.size = 0.01});
    const auto file = drawing->finish();
    return std::string(file->begin(), file->end()).find("<use") != std::string::npos;
  };
  constexpr std::size_t kLongest = std::size_t{256} << 10U;
  EXPECT_TRUE(is_shown(kLongest - 1));
  EXPECT_FALSE(is_shown(kLongest));
}

TEST_F(TextDrawing, BreaksLinesAlikeOnPaper) {
  // What stands in an SVG is the same set of glyphs at the same places.
  const auto drawing = make_drawing(cairo_drawing::FileType::kSvg, {100, 100});
  drawing->draw_text("hello hello hello", {{0, 0}, {40, 100}}, {.size = 10, .colour = kRed});
  const auto file = drawing->finish();
  ASSERT_TRUE(file);
  const std::string svg(file->begin(), file->end());
  EXPECT_NE(svg.find("glyph"), std::string::npos) << svg;
}

}  // namespace
}  // namespace quoll::test
