#include "quoll/view/flipped_view.h"

#include <limits>

#include "tests/cairo/pixels.h"

namespace quoll::test {
namespace {

using platform::Colour;
using platform::NSGraphicsContext;
using platform::NSRect;
using platform::NSView;

/// Fills all that it is to draw.
FlippedView::DrawingBlock filling(const Colour& colour) {
  return [colour](const auto& /*view*/, const NSRect& dirty) {
    NSGraphicsContext::currentContext()->fill_rect(dirty, colour);
  };
}

/// A view with y upwards that paints its lowest row.
class Plain : public NSView {
 public:
  Plain(const NSRect& frame, const Colour& colour) : NSView(frame), colour_(colour) {}
  void drawRect(const NSRect& /*dirty*/) override {
    NSGraphicsContext::currentContext()->fill_rect({{0, 0}, {1000, 1}}, colour_);
  }

 private:
  Colour colour_;
};

/// A flipped view that paints its topmost row.
std::shared_ptr<FlippedView> top_row(const NSRect& frame, const Colour& colour) {
  return FlippedView::initWithFrame(frame, [colour](const auto&, const auto&) {
    NSGraphicsContext::currentContext()->fill_rect({{0, 0}, {1000, 1}}, colour);
  });
}

class ViewDrawing : public PixelTest {
 protected:
  static Rows drawn(NSView& view, int width, int height) {
    const auto drawing = pixels(width, height);
    view.display(*drawing);
    return rows(*drawing, width, height);
  }
};

TEST_F(ViewDrawing, FlippedInPlain) {
  const auto outer = std::make_shared<Plain>(NSRect{{0, 0}, {6, 6}}, kRed);
  outer->addSubview(top_row({{1, 2}, {4, 3}}, kGreen));
  EXPECT_EQ(drawn(*outer, 6, 6),
            (Rows{"......", ".gggg.", "......", "......", "......", "rrrrrr"}));
}

TEST_F(ViewDrawing, PlainInFlipped) {
  const auto outer = top_row({{0, 0}, {6, 6}}, kRed);
  outer->addSubview(std::make_shared<Plain>(NSRect{{1, 2}, {4, 3}}, kGreen));
  EXPECT_EQ(drawn(*outer, 6, 6),
            (Rows{"rrrrrr", "......", "......", "......", ".gggg.", "......"}));
}

TEST_F(ViewDrawing, FlippedInPlainInFlipped) {
  const auto outer = top_row({{0, 0}, {6, 6}}, kRed);
  const auto middle = std::make_shared<Plain>(NSRect{{0, 1}, {6, 5}}, kGreen);
  middle->addSubview(top_row({{2, 1}, {3, 2}}, kBlue));
  outer->addSubview(middle);
  EXPECT_EQ(drawn(*outer, 6, 6),
            (Rows{"rrrrrr", "......", "......", "..bbb.", "......", "gggggg"}));
}

TEST_F(ViewDrawing, IsClippedToTheViewsAround) {
  const auto outer = FlippedView::initWithFrame({{0, 0}, {6, 4}}, filling(kRed));
  const auto middle = FlippedView::initWithFrame({{1, 1}, {3, 2}}, filling(kGreen));
  middle->addSubview(FlippedView::initWithFrame({{2, -5}, {10, 6}}, [](const auto&, const auto&) {
    NSGraphicsContext::currentContext()->fill_rect({{-50, -50}, {100, 100}}, kBlue);
  }));
  outer->addSubview(middle);
  EXPECT_EQ(drawn(*outer, 6, 4), (Rows{"rrrrrr", "rggbrr", "rgggrr", "rrrrrr"}));
}

TEST_F(ViewDrawing, OnlyTheDirtyPartIsTouched) {
  const auto outer = FlippedView::initWithFrame({{0, 0}, {6, 4}}, filling(kRed));
  const auto inner = FlippedView::initWithFrame({{1, 1}, {4, 2}}, filling(kGreen));
  outer->addSubview(inner);
  const auto drawing = pixels(6, 4);
  outer->display(*drawing);
  const Rows before{"rrrrrr", "rggggr", "rggggr", "rrrrrr"};
  EXPECT_EQ(rows(*drawing, 6, 4), before);

  outer->drawingBlock = filling(kGreen);
  inner->drawingBlock = filling(kBlue);
  outer->displayIfNeeded(*drawing);
  EXPECT_EQ(rows(*drawing, 6, 4), before) << "nothing waits";

  inner->setNeedsDisplayInRect({{1, 0}, {1, 10}});
  outer->displayIfNeeded(*drawing);
  EXPECT_EQ(rows(*drawing, 6, 4), (Rows{"rrrrrr", "rgbggr", "rgbggr", "rrrrrr"}));

  outer->setNeedsDisplayInRect({{4, 2}, {9, 9}});
  outer->displayIfNeeded(*drawing);
  EXPECT_EQ(rows(*drawing, 6, 4), (Rows{"rrrrrr", "rgbggr", "rgbgbg", "rrrrgg"}));
}

TEST_F(ViewDrawing, ADirtyPartOfPixelsIsDrawnInWholePixels) {
  const auto view = FlippedView::initWithFrame({{0, 0}, {4, 3}}, filling(kRed));
  const auto drawing = pixels(4, 3);
  view->display(*drawing);
  view->drawingBlock = filling(kBlue);
  view->setNeedsDisplayInRect({{1.25, 1.5}, {0.5, 0.25}});
  view->displayIfNeeded(*drawing);
  EXPECT_EQ(rows(*drawing, 4, 3), (Rows{"rrrr", "rbrr", "rrrr"}));
}

TEST_F(ViewDrawing, TwiceIsTheSameAsOnce) {
  const auto outer = FlippedView::initWithFrame({{0, 0}, {4, 4}}, filling(kRed));
  outer->addSubview(FlippedView::initWithFrame({{0.5, 0.5}, {2.25, 2}}, filling(kBlue)));
  const auto drawing = pixels(4, 4);
  outer->display(*drawing);
  const std::uint32_t edge = drawing->pixel(0, 1);
  EXPECT_NE(edge, kRedPixel) << "half of the pixel is blue";
  EXPECT_NE(edge, kBluePixel);
  outer->setNeedsDisplayInRect({{0.1, 0.1}, {1.1, 1.1}});
  outer->displayIfNeeded(*drawing);
  EXPECT_EQ(drawing->pixel(0, 1), edge);
}

TEST_F(ViewDrawing, FollowsItsSuperviewsSize) {
  const auto outer = std::make_shared<Plain>(NSRect{{0, 0}, {6, 5}}, kRed);
  const auto view = FlippedView::initWithFrame({{1, 2}, {3, 2}}, filling(kGreen));
  outer->addSubview(view);
  const struct {
    platform::NSSize size;
    Rows rows;
    const char* reason;
  } table[] = {
      {{6, 5},
       {"........", ".ggg....", ".ggg....", "........", "rrrrrr..", "........", "........"},
       "as it was: from y = 2 to 4 of 5"},
      {{8, 7},
       {"........", ".ggggg..", ".ggggg..", ".ggggg..", ".ggggg..", "........", "rrrrrrrr"},
       "grown by two; the lower edge stays two above that of the superview"},
      {{5, 4},
       {"........", ".gg.....", "........", "rrrrr...", "........", "........", "........"},
       "shrunk by three"},
      {{3, 3},
       {"........", "........", "rrr.....", "........", "........", "........", "........"},
       "to nothing"},
      {{6, 6},
       {"........", ".ggg....", ".ggg....", ".ggg....", "........", "rrrrrr..", "........"},
       "grown from nothing by three each way"},
  };
  for (const auto& row : table) {
    outer->setFrameSize(row.size);
    EXPECT_EQ(drawn(*outer, 8, 7), row.rows) << row.reason;
  }
}

TEST_F(ViewDrawing, FramesOfAnyNumbersAreDrawnAsFarAsTheyCanBe) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const Rows nothing{"rrr", "rrr"};
  const struct {
    NSRect frame;
    Rows rows;
    const char* reason;
  } table[] = {
      {{{1, 0}, {0, 2}}, nothing, "no width"},
      {{{1, 0}, {2, -1}}, nothing, "a negative height"},
      {{{1, 0}, {kNaN, 2}}, nothing, "a width that is no number"},
      {{{kInfinity, 0}, {5, 5}}, nothing, "too far to the right"},
      {{{kNaN, 1}, {2, 1}}, {"rrr", "bbr"}, "a place that is no number is 0"},
      {{{1, 0}, {kInfinity, 1}}, {"rbb", "rrr"}, "without an end on the right"},
      {{{-kInfinity, -kInfinity}, {kInfinity, kInfinity}}, {"bbb", "bbb"}, "everywhere"},
      {{{-1e300, 1}, {1e308, 1e308}}, {"rrr", "bbb"}, "beyond all measure"},
  };
  for (const auto& row : table) {
    const auto outer = FlippedView::initWithFrame({{0, 0}, {3, 2}}, filling(kRed));
    outer->addSubview(FlippedView::initWithFrame(row.frame, filling(kBlue)));
    EXPECT_EQ(drawn(*outer, 3, 2), row.rows) << row.reason;
  }
}

TEST_F(ViewDrawing, AFractionalSizeFillsAPartOfThePixel) {
  const auto outer = FlippedView::initWithFrame({{0, 0}, {4, 4}}, filling(kRed));
  const auto view = FlippedView::initWithFrame({{1, 1}, {1, 1}}, filling(kBlue));
  outer->addSubview(view);
  outer->setFrameSize({4.5, 4.25});
  EXPECT_EQ(view->frame(), (NSRect{{1, 1}, {1.5, 1.25}}));
  const auto drawing = pixels(5, 5);
  outer->display(*drawing);
  EXPECT_EQ(drawing->pixel(1, 1), kBluePixel);
  const std::uint32_t half = drawing->pixel(2, 1);
  EXPECT_NEAR(half & 0xff, 0x80, 8) << "half of it is blue";
  EXPECT_NEAR(half >> 16 & 0xff, 0x7f, 8);
  const std::uint32_t quarter = drawing->pixel(1, 2);
  EXPECT_NEAR(quarter & 0xff, 0x40, 8);
  EXPECT_EQ(drawing->pixel(3, 1), kRedPixel);
}

TEST_F(ViewDrawing, DeepTreesGoOnEveryKindOfDrawing) {
  constexpr int kDepth = 10'000;
  for (const auto type : {cairo_drawing::FileType::kPng, cairo_drawing::FileType::kPdf,
                          cairo_drawing::FileType::kSvg}) {
    std::shared_ptr<NSView> view;
    for (int i = 0; i < kDepth; ++i) {
      const std::shared_ptr<NSView> around =
          i % 2 == 0 ? std::shared_ptr<NSView>(top_row({{0, 0}, {8, 8}}, i == 0 ? kBlue : kRed))
                     : std::make_shared<Plain>(NSRect{{0, 0}, {8, 8}}, kGreen);
      if (view) {
        around->addSubview(view);
      }
      view = around;
    }
    const auto drawing = make_drawing(type, {8, 8});
    view->display(*drawing);
    if (type == cairo_drawing::FileType::kPng) {
      EXPECT_EQ(drawing->pixel(4, 0), kBluePixel) << "the innermost, in front of all";
      EXPECT_EQ(drawing->pixel(4, 7), kGreenPixel);
    }
    EXPECT_TRUE(drawing->finish());
  }
}

TEST_F(ViewDrawing, ABlockThatThrowsLeavesTheDrawingWhole) {
  const auto outer = FlippedView::initWithFrame({{0, 0}, {4, 2}}, filling(kRed));
  const auto view = FlippedView::initWithFrame({{1, 0}, {2, 1}}, [](const auto&, const auto&) {
    NSGraphicsContext::currentContext()->clip({});
    throw std::runtime_error("no");
  });
  outer->addSubview(view);
  const auto drawing = pixels(4, 2);
  EXPECT_THROW(outer->display(*drawing), std::runtime_error);
  view->drawingBlock = filling(kBlue);
  outer->displayIfNeeded(*drawing);
  EXPECT_EQ(rows(*drawing, 4, 2), (Rows{"rbbr", "rrrr"}));
}

}  // namespace
}  // namespace quoll::test
