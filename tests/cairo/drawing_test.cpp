#include "quoll/linux/cairo/drawing.h"

#include <cmath>
#include <limits>
#include <string_view>

#include "tests/cairo/pdf_text.h"
#include "tests/cairo/pixels.h"

namespace quoll::test {
namespace {

using cairo_drawing::Drawing;
using cairo_drawing::FileType;
using cairo_drawing::make_drawing;
using platform::Colour;
using platform::NSPoint;
using platform::NSRect;
using platform::NSSize;
using platform::SavedGraphicsState;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr FileType kTypes[] = {FileType::kPng, FileType::kPdf, FileType::kSvg};

class DrawingTest : public PixelTest {};

TEST_F(DrawingTest, RefusesSizesThatCannotBeDrawn) {
  const struct {
    NSSize size;
    const char* reason;
  } rows[] = {{{0, 10}, "no width"},         {{10, 0}, "no height"},
              {{-1, 10}, "less than none"},  {{10, -1}, "less than none"},
              {{kNaN, 10}, "not a number"},  {{10, kNaN}, "not a number"},
              {{16384.5, 10}, "too wide"},   {{10, 16384.5}, "too high"},
              {{kInfinity, 10}, "far wide"}, {{10, kInfinity}, "far high"}};
  for (const auto& row : rows) {
    for (const FileType type : kTypes) {
      EXPECT_EQ(make_drawing(type, row.size), nullptr) << row.reason;
    }
  }
  EXPECT_EQ(log_->lines().size(), std::size(rows) * std::size(kTypes));
  EXPECT_EQ(log_->lines().front(), "drawing: the size cannot be drawn");
}

TEST_F(DrawingTest, TakesTheLongestSideAndAPartOfAPixel) {
  EXPECT_NE(make_drawing(FileType::kPng, {16384, 1}), nullptr);
  EXPECT_NE(make_drawing(FileType::kPng, {1, 16384}), nullptr);
  const auto drawing = pixels(2.25, 0.5);
  drawing->fill_rect({{-1, -1}, {20, 20}}, kRed);
  EXPECT_EQ(rows(*drawing, 4, 2), (Rows{"rrr.", "...."})) << "three by one; nothing beside it";
  EXPECT_EQ(drawing->pixel(-1, 0), 0U);
  EXPECT_EQ(drawing->pixel(0, -1), 0U);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(DrawingTest, IsTransparentAtFirst) {
  EXPECT_EQ(rows(*pixels(2, 1), 2, 1), Rows{".."});
}

TEST_F(DrawingTest, BecomesAFileOfItsType) {
  const std::string_view beginnings[] = {"\x89PNG\r\n", "%PDF-", "<?xml"};
  for (std::size_t i = 0; i < std::size(kTypes); ++i) {
    const auto drawing = make_drawing(kTypes[i], {20, 10});
    ASSERT_NE(drawing, nullptr);
    drawing->fill_rounded_rect({{2, 2}, {10, 5}}, 2, kRed);
    drawing->draw_text("text", {{0, 0}, {20, 10}}, {.size = 6});
    const auto file = drawing->finish();
    ASSERT_TRUE(file);
    const std::string text(file->begin(), file->end());
    EXPECT_TRUE(text.starts_with(beginnings[i])) << text.substr(0, 10);
    EXPECT_EQ(drawing->finish(), std::nullopt) << "only once";
    EXPECT_EQ(drawing->pixel(5, 5), 0U) << "it has ended";
    drawing->fill_rect({{2, 2}, {10, 5}}, kRed);
    drawing->draw_text("text", {{0, 0}, {20, 10}}, {.size = 6});
    EXPECT_EQ(drawing->pixel(5, 5), 0U);
  }
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(DrawingTest, PaperHasItsSizeAndNoPixels) {
  const auto drawing = make_drawing(FileType::kSvg, {200.5, 100});
  drawing->fill_rect({{0, 0}, {200, 100}}, kRed);
  EXPECT_EQ(drawing->pixel(5, 5), 0U);
  const auto file = drawing->finish();
  ASSERT_TRUE(file);
  const std::string text(file->begin(), file->end());
  EXPECT_NE(text.find("viewBox=\"0 0 200.5 100\""), std::string::npos) << text;
  const auto page = make_drawing(FileType::kPdf, {200, 100.5})->finish();
  ASSERT_TRUE(page);
  const std::string paper = pdf_text(std::string(page->begin(), page->end()));
  EXPECT_NE(paper.find("MediaBox [ 0 0 200 100.5 ]"), std::string::npos);
}

TEST_F(DrawingTest, MayGoUnfinished) {
  for (const FileType type : kTypes) {
    make_drawing(type, {20, 10})->fill_rect({{2, 2}, {10, 5}}, kRed);
  }
}

TEST_F(DrawingTest, FillsARectangle) {
  const auto drawing = pixels(6, 4);
  drawing->fill_rect({{1, 2}, {3, 1}}, kGreen);
  EXPECT_EQ(rows(*drawing, 6, 4), (Rows{"......", "......", ".ggg..", "......"}));
}

TEST_F(DrawingTest, CutsColoursToWhatThereIs) {
  const struct {
    Colour colour;
    std::uint32_t pixel;
    const char* reason;
  } rows[] = {
      {{0.2, 0.4, 0.6, 1}, 0xFF336699, "each part has its place"},
      {{1, 1, 1, 0.2}, 0x33333333, "multiplied by the alpha"},
      {{}, 0xFF000000, "black, unless it is said"},
      {{5, -5, kNaN, 2}, 0xFFFF0000, "cut, and NaN is nothing"},
      {{1, 1, 1, kNaN}, 0, "an alpha that is not a number"},
      {{kInfinity, -kInfinity, 0, kInfinity}, 0xFFFF0000, "the ends of all numbers"},
  };
  for (const auto& row : rows) {
    const auto drawing = pixels(1, 1);
    drawing->fill_rect({{0, 0}, {1, 1}}, row.colour);
    EXPECT_EQ(drawing->pixel(0, 0), row.pixel) << row.reason;
  }
}

TEST_F(DrawingTest, RoundsCorners) {
  const struct {
    double radius;
    std::uint32_t corner;
    const char* reason;
  } rows[] = {{0, kRedPixel, "none"},
              {-3, kRedPixel, "less than none"},
              {kNaN, kRedPixel, "not a number"},
              {4, 0, "a round corner"},
              {1000, 0, "cut to half a side"},
              {kInfinity, 0, "so too"}};
  for (const auto& row : rows) {
    const auto drawing = pixels(40, 20);
    drawing->fill_rounded_rect({{0, 0}, {40, 20}}, row.radius, kRed);
    for (const auto& [column, line] : {std::pair(0, 0), {39, 0}, {0, 19}, {39, 19}}) {
      EXPECT_EQ(drawing->pixel(column, line), row.corner) << row.reason;
    }
    for (const auto& [column, line] : {std::pair(20, 10), {20, 0}, {20, 19}, {11, 10}, {28, 10}}) {
      EXPECT_EQ(drawing->pixel(column, line), kRedPixel) << row.reason;
    }
  }
}

TEST_F(DrawingTest, AHighRectanglesRadiusIsCutByItsWidth) {
  const auto drawing = pixels(20, 40);
  drawing->fill_rounded_rect({{0, 0}, {20, 40}}, 1000, kRed);
  EXPECT_EQ(drawing->pixel(0, 20), kRedPixel);
  EXPECT_EQ(drawing->pixel(1, 1), 0U);
}

TEST_F(DrawingTest, StrokesAlongTheEdge) {
  const auto drawing = pixels(8, 6);
  drawing->stroke_rect({{2, 2}, {4, 2}}, 2, kBlue);
  EXPECT_EQ(rows(*drawing, 8, 6),
            (Rows{"........", ".bbbbbb.", ".bbbbbb.", ".bbbbbb.", ".bbbbbb.", "........"}));
  const auto thin = pixels(8, 6);
  thin->stroke_rect({{1.5, 1.5}, {5, 3}}, 1, kBlue);
  EXPECT_EQ(rows(*thin, 8, 6),
            (Rows{"........", ".bbbbbb.", ".b....b.", ".b....b.", ".bbbbbb.", "........"}));
}

TEST_F(DrawingTest, StrokesRoundCornersAndLines) {
  const auto drawing = pixels(40, 40);
  drawing->stroke_rounded_rect({{1, 1}, {38, 38}}, 10, 2, kBlue);
  EXPECT_EQ(drawing->pixel(20, 0), kBluePixel);
  EXPECT_EQ(drawing->pixel(0, 20), kBluePixel);
  EXPECT_EQ(drawing->pixel(20, 39), kBluePixel);
  EXPECT_EQ(drawing->pixel(39, 20), kBluePixel);
  EXPECT_EQ(drawing->pixel(0, 0), 0U);
  EXPECT_EQ(drawing->pixel(20, 20), 0U);
  const auto lines = pixels(5, 3);
  lines->stroke_line({1, 1.5}, {4, 1.5}, 1, kRed);
  EXPECT_EQ(rows(*lines, 5, 3), (Rows{".....", ".rrr.", "....."}));
}

TEST_F(DrawingTest, ALineWithoutWidthIsNone) {
  const auto drawing = pixels(8, 8);
  for (const double width : {0.0, -2.0, kNaN, -kInfinity}) {
    drawing->stroke_rect({{2, 2}, {4, 4}}, width, kRed);
    drawing->stroke_line({0, 0}, {8, 8}, width, kRed);
  }
  EXPECT_EQ(rows(*drawing, 8, 8), Rows(8, "........"));
}

TEST_F(DrawingTest, OneFigureLeavesNothingForTheNext) {
  const auto drawing = pixels(4, 1);
  drawing->stroke_line({0, 0.5}, {1, 0.5}, 0, kRed);
  drawing->clip({{0, 0}, {4, 1}});
  drawing->fill_rect({{3, 0}, {1, 1}}, kRed);
  EXPECT_EQ(rows(*drawing, 4, 1), Rows{"...r"});
}

TEST_F(DrawingTest, Clips) {
  const auto drawing = pixels(6, 1);
  {
    const SavedGraphicsState state(*drawing);
    drawing->clip({{1, 0}, {3, 1}});
    drawing->fill_rect({{0, 0}, {6, 1}}, kRed);
    drawing->clip({{2, 0}, {9, 1}});
    drawing->fill_rect({{0, 0}, {6, 1}}, kGreen);
    drawing->clip({{0, 0}, {1, 1}});
    drawing->fill_rect({{0, 0}, {6, 1}}, kBlue);
  }
  EXPECT_EQ(rows(*drawing, 6, 1), Rows{".rgg.."}) << "each inside the one before";
  drawing->fill_rect({{5, 0}, {1, 1}}, kBlue);
  EXPECT_EQ(rows(*drawing, 6, 1), Rows{".rgg.b"}) << "and brought back";
}

TEST_F(DrawingTest, AnEmptyClipHidesEverything) {
  for (const NSRect& clip :
       {NSRect{{0, 0}, {0, 5}}, NSRect{{0, 0}, {kNaN, 5}}, NSRect{{50, 0}, {5, 5}}}) {
    const auto drawing = pixels(4, 4);
    drawing->clip(clip);
    drawing->fill_rect({{0, 0}, {4, 4}}, kRed);
    drawing->stroke_line({0, 0}, {4, 4}, 4, kRed);
    drawing->stroke_rect({{1, 1}, {2, 2}}, 2, kRed);
    drawing->draw_text("text", {{0, 0}, {4, 4}}, {});
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "...."));
  }
}

TEST_F(DrawingTest, GoesThroughTransforms) {
  const auto drawing = pixels(6, 3);
  {
    const SavedGraphicsState state(*drawing);
    drawing->translate(1, 0);
    drawing->scale(2, 3);
    drawing->translate(1, 0);
    drawing->fill_rect({{0, 0}, {1, 1}}, kRed);
  }
  drawing->concat({.a = 0, .b = 1, .c = 1, .d = 0, .tx = 5, .ty = 0});
  drawing->fill_rect({{0, 0}, {3, 1}}, kGreen);
  EXPECT_EQ(rows(*drawing, 6, 3), (Rows{"...rrg", "...rrg", "...rrg"}));
}

TEST_F(DrawingTest, FlipTurnsTheAxisOver) {
  const auto drawing = pixels(1, 4);
  EXPECT_TRUE(drawing->isFlipped());
  {
    const SavedGraphicsState state(*drawing);
    drawing->translate(0, 4);
    drawing->flip();
    EXPECT_FALSE(drawing->isFlipped());
    drawing->fill_rect({{0, 0}, {1, 1}}, kRed);
    drawing->scale(1, -1);
    EXPECT_FALSE(drawing->isFlipped()) << "only flip changes it";
    {
      const SavedGraphicsState inner(*drawing);
      drawing->flip();
      EXPECT_TRUE(drawing->isFlipped());
    }
    EXPECT_FALSE(drawing->isFlipped());
  }
  EXPECT_TRUE(drawing->isFlipped());
  EXPECT_EQ(rows(*drawing, 1, 4), (Rows{".", ".", ".", "r"}));
}

TEST_F(DrawingTest, ATransformWithoutAWayBackHides) {
  const struct {
    platform::AffineTransform transform;
    const char* reason;
  } rows[] = {
      {{.a = 0}, "no width"},
      {{.d = 0}, "no height"},
      {{.a = 1, .b = 1, .c = 1, .d = 1}, "all on one line"},
      {{.a = kNaN}, "not a number"},
      {{.b = kNaN}, "not a number"},
      {{.c = kNaN}, "not a number"},
      {{.tx = kNaN}, "nor here"},
      {{.ty = kInfinity}, "far away"},
      {{.a = kInfinity}, "endless"},
      {{.a = 1e-4, .d = 1e-4}, "too small to be seen"},
      {{.a = 2e6}, "beyond measure"},
      {{.d = 2e6}, "beyond measure"},
      {{.b = 2e6}, "askew beyond measure"},
      {{.c = 2e6}, "askew beyond measure"},
      {{.a = 1e300, .d = 1e300}, "beyond all numbers"},
  };
  for (const auto& row : rows) {
    const auto drawing = pixels(4, 4);
    {
      const SavedGraphicsState state(*drawing);
      drawing->concat(row.transform);
      drawing->fill_rect({{-1000, -1000}, {2000, 2000}}, kRed);
      drawing->draw_text("text", {{0, 0}, {4, 4}}, {});
    }
    EXPECT_EQ(PixelTest::rows(*drawing, 4, 4), Rows(4, "....")) << row.reason;
    drawing->fill_rect({{0, 0}, {4, 4}}, kGreen);
    EXPECT_EQ(PixelTest::rows(*drawing, 4, 4), Rows(4, "gggg")) << row.reason << ": brought back";
    EXPECT_TRUE(drawing->finish()) << row.reason;
  }
}

TEST_F(DrawingTest, StrongTransformsStillDraw) {
  for (const double stretch : {1.0e-3, 1.0, 1.0e3}) {
    const auto drawing = pixels(4, 4);
    drawing->scale(stretch, stretch);
    drawing->fill_rect({{-1e6, -1e6}, {2e6, 2e6}}, kRed);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "rrrr")) << stretch;
    drawing->stroke_line({-1e9, 0}, {1e9, 0}, 1e9, kGreen);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "gggg")) << stretch;
    drawing->fill_rounded_rect({{-1e9, -1e9}, {2e9, 2e9}}, 1e9, kBlue);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "bbbb")) << stretch;
  }
}

TEST_F(DrawingTest, ALineIsAsWideAsItsTransformMakesIt) {
  const auto drawing = pixels(8, 6);
  {
    const SavedGraphicsState state(*drawing);
    drawing->scale(1, 0.001);
    drawing->stroke_line({1, 3000}, {7, 3000}, 2000, kRed);
    EXPECT_EQ(rows(*drawing, 8, 6),
              (Rows{"........", "........", ".rrrrrr.", ".rrrrrr.", "........", "........"}));
    drawing->stroke_line({4, 0}, {4, 6000}, 2, kBlue);
  }
  drawing->stroke_line({0, 5.5}, {8, 5.5}, 1, kGreen);
  EXPECT_EQ(rows(*drawing, 8, 6),
            (Rows{"...bb...", "...bb...", ".rrbbrr.", ".rrbbrr.", "...bb...", "gggggggg"}));
}

TEST_F(DrawingTest, FindsWholePixels) {
  const auto drawing = pixels(20, 20);
  EXPECT_EQ(drawing->pixel_aligned({{1.25, 2.5}, {2, 3.75}}), (NSRect{{1, 2}, {3, 5}}));
  EXPECT_EQ(drawing->pixel_aligned({{1, 2}, {3, 4}}), (NSRect{{1, 2}, {3, 4}}));
  EXPECT_EQ(drawing->pixel_aligned({{-1.5, -2.5}, {1, 1}}), (NSRect{{-2, -3}, {2, 2}}));
  {
    const SavedGraphicsState state(*drawing);
    drawing->scale(2, 4);
    EXPECT_EQ(drawing->pixel_aligned({{1.25, 2.3}, {2, 3.8}}), (NSRect{{1, 2.25}, {2.5, 4}}));
  }
  {
    const SavedGraphicsState state(*drawing);
    drawing->translate(0.5, 10);
    drawing->flip();
    EXPECT_EQ(drawing->pixel_aligned({{1, 2.25}, {1, 1}}), (NSRect{{0.5, 2}, {2, 2}}));
  }
  {
    const SavedGraphicsState state(*drawing);
    drawing->concat({.a = 0, .b = 1, .c = -1, .d = 0, .tx = 10, .ty = 0});
    EXPECT_EQ(drawing->pixel_aligned({{1.25, 2.5}, {2, 3.75}}), (NSRect{{1, 2}, {3, 5}}));
  }
  for (const FileType type : {FileType::kPdf, FileType::kSvg}) {
    const NSRect part{{1.25, 2.5}, {2, 3.75}};
    EXPECT_EQ(make_drawing(type, {20, 20})->pixel_aligned(part), part) << "no pixels";
  }
}

TEST_F(DrawingTest, HugeFiguresAreDrawnAsFarAsTheyAreSeen) {
  const NSRect huge{{-1e9, -1e9}, {2e9, 2e9}};
  for (const NSRect& rect : {huge, NSRect{{-kInfinity, -kInfinity}, {kInfinity, kInfinity}},
                             NSRect{{-1e9, -5}, {2e9, 20}}}) {
    const auto drawing = pixels(4, 4);
    drawing->fill_rect(rect, kRed);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "rrrr"));
    drawing->fill_rounded_rect(rect, 5, kGreen);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "gggg"));
    drawing->stroke_rounded_rect(rect, 5, 2, kBlue);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "gggg")) << "its edge is far away";
    drawing->clip(rect);
    drawing->fill_rect({{0, 0}, {4, 4}}, kBlue);
    EXPECT_EQ(rows(*drawing, 4, 4), Rows(4, "bbbb"));
  }
  const auto drawing = pixels(3, 3);
  drawing->stroke_line({-kInfinity, 1.5}, {kInfinity, 1.5}, 1, kRed);
  drawing->stroke_line({1.5, -1e9}, {1.5, 1e9}, 1, kRed);
  EXPECT_EQ(rows(*drawing, 3, 3), (Rows{".r.", "rrr", ".r."}));
  drawing->stroke_line({0, 0}, {3, 3}, kInfinity, kGreen);
  EXPECT_EQ(rows(*drawing, 3, 3), Rows(3, "ggg"));
}

TEST_F(DrawingTest, AFarEdgeIsNotSeenHoweverWideItsLine) {
  constexpr int kSide = 40;
  const auto drawing = pixels(kSide, kSide);
  for (const double radius : {0.0, 5.0}) {
    for (const double width : {2.0, 8.0, 30.0}) {
      drawing->stroke_rounded_rect({{-1e9, -1e9}, {2e9, 2e9}}, radius, width, kBlue);
      EXPECT_EQ(rows(*drawing, kSide, kSide), Rows(kSide, std::string(kSide, '.')))
          << radius << ' ' << width;
    }
  }
}

TEST_F(DrawingTest, NoNumberDoesHarm) {
  const double numbers[] = {0, -1, 1e-300, 3, 1e9, 1e40, -1e300, kInfinity, -kInfinity, kNaN};
  for (const FileType type : kTypes) {
    const auto drawing = make_drawing(type, {30, 30});
    for (const double a : numbers) {
      for (const double b : numbers) {
        const SavedGraphicsState state(*drawing);
        for (const NSRect& rect :
             {NSRect{{a, b}, {10, 10}}, NSRect{{5, 5}, {a, b}}, NSRect{{b, 0}, {a, a}}}) {
          drawing->fill_rounded_rect(rect, a, {a, b, a, b});
          drawing->stroke_rounded_rect(rect, b, a, {a, b, a, b});
          drawing->stroke_line({a, b}, {b, 3}, b, {a, b, a, b});
          drawing->draw_text("Text", rect, {.size = b, .colour = {a, b, a, b}});
        }
        drawing->clip({{a, a}, {b, 1e9}});
        drawing->concat({.a = a, .b = b, .c = b, .d = 2, .tx = a, .ty = b});
        drawing->fill_rounded_rect({{0, 0}, {20, 20}}, 4, kRed);
        drawing->draw_text("Text", {{0, 0}, {20, 20}}, {.size = 5});
      }
    }
    EXPECT_TRUE(drawing->finish()) << static_cast<int>(type);
  }
  EXPECT_TRUE(log_->lines().empty());
}

}  // namespace
}  // namespace quoll::test
