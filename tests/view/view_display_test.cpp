#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <string>

#include "quoll/view/view.h"
#include "tests/support/plain_context.h"

namespace quoll::platform {
namespace {

using test::PlainContext;
using Rects = std::vector<NSRect>;

/// Keeps what it is asked to draw, fills it, and does what else the test wants.
class Probe : public NSView {
 public:
  explicit Probe(const NSRect& frame, bool flipped = true, std::function<void()> also = nullptr)
      : NSView(frame), also_(std::move(also)), flipped_(flipped) {}
  bool isFlipped() const override { return flipped_; }
  void drawRect(const NSRect& dirty) override {
    drawn.push_back(dirty);
    NSGraphicsContext::currentContext()->fill_rect(dirty, {});
    if (also_) {
      also_();
    }
  }

  Rects drawn;

 private:
  std::function<void()> also_;
  bool flipped_;
};

std::shared_ptr<Probe> probe(const NSRect& frame, bool flipped = true,
                             std::function<void()> also = nullptr) {
  return std::make_shared<Probe>(frame, flipped, std::move(also));
}

/// Draws everything, so that nothing waits.
void draw_all(NSView& view) {
  PlainContext context;
  view.display(context);
}

/// What the tree draws again, in the coordinates of the context.
Rects drawn_again(NSView& view) {
  PlainContext context;
  view.displayIfNeeded(context);
  return context.filled();
}

TEST(Display, PutsTheUpperLeftCornerAtTheOrigin) {
  for (const bool flipped : {true, false}) {
    const auto view = probe({{100, 200}, {30, 20}}, flipped);
    PlainContext context;
    view->display(context);
    EXPECT_EQ(view->drawn, (Rects{{{0, 0}, {30, 20}}}));
    EXPECT_EQ(context.filled(), (Rects{{{0, 0}, {30, 20}}})) << "where its frame is matters not";
  }
}

TEST(Display, TheBaseClassDrawsNothing) {
  PlainContext context;
  std::make_shared<NSView>(NSRect{{0, 0}, {30, 20}})->display(context);
  EXPECT_TRUE(context.filled().empty());
}

TEST(Display, PlacesSubviewsInTheCoordinatesOfTheirSuperview) {
  const struct {
    bool outer;
    bool inner;
    NSRect filled;
    const char* reason;
  } rows[] = {
      {true, true, {{10, 5}, {30, 20}}, "y downwards from the top"},
      {true, false, {{10, 5}, {30, 20}}, "the frame belongs to the superview"},
      {false, true, {{10, 75}, {30, 20}}, "y upwards from the bottom: 100 - 5 - 20"},
      {false, false, {{10, 75}, {30, 20}}, "so too"},
  };
  for (const auto& row : rows) {
    const auto outer = probe({{0, 0}, {100, 100}}, row.outer);
    const auto inner = probe({{10, 5}, {30, 20}}, row.inner);
    outer->addSubview(inner);
    PlainContext context;
    outer->display(context);
    ASSERT_EQ(context.filled().size(), 2U);
    EXPECT_EQ(context.filled().back(), row.filled) << row.reason;
    EXPECT_EQ(inner->drawn, (Rects{{{0, 0}, {30, 20}}})) << row.reason;
  }
}

TEST(Display, TurnsTheCoordinatesOfEveryView) {
  // A mark of 1 by 1 at (2, 3) of the innermost view, whose upper left corner is at (15, 25).
  for (int kinds = 0; kinds < 8; ++kinds) {
    const bool outerFlipped = (kinds & 1) != 0;
    const bool middleFlipped = (kinds & 2) != 0;
    const bool innerFlipped = (kinds & 4) != 0;
    const auto outer = probe({{0, 0}, {100, 90}}, outerFlipped);
    const auto middle = probe({{10, outerFlipped ? 20.0 : 90 - 20 - 50}, {60, 50}}, middleFlipped);
    const auto inner = probe({{5, middleFlipped ? 5.0 : 50 - 5 - 10}, {40, 10}}, innerFlipped, [] {
      NSGraphicsContext::currentContext()->fill_rect({{2, 3}, {1, 1}}, {});
    });
    middle->addSubview(inner);
    outer->addSubview(middle);
    PlainContext context;
    outer->display(context);
    EXPECT_EQ(context.filled().back(), (NSRect{{17, innerFlipped ? 28.0 : 31.0}, {1, 1}})) << kinds;
  }
}

TEST(Display, KnowsAContextThatIsTurnedOver) {
  PlainContext context;
  context.translate(0, 50);
  context.flip();
  EXPECT_FALSE(context.isFlipped());
  bool flipped = false;
  const auto view = probe({{0, 0}, {30, 20}}, true, [&] {
    flipped = NSGraphicsContext::currentContext()->isFlipped();
    NSGraphicsContext::currentContext()->fill_rect({{0, 0}, {30, 1}}, {});
  });
  view->display(context);
  EXPECT_EQ(context.filled().back(), (NSRect{{0, 30}, {30, 1}})) << "its top, above 0";
  EXPECT_TRUE(flipped);
  EXPECT_FALSE(context.isFlipped()) << "brought back";
}

TEST(Display, DrawsFromBackToFrontAndWhatIsInsideFirst) {
  std::string order;
  const auto outer = probe({{0, 0}, {10, 10}}, true, [&] { order += "outer "; });
  const auto back = probe({{0, 0}, {10, 10}}, true, [&] { order += "back "; });
  const auto inBack = probe({{0, 0}, {10, 10}}, true, [&] { order += "inBack "; });
  const auto front = probe({{0, 0}, {10, 10}}, true, [&] { order += "front "; });
  back->addSubview(inBack);
  outer->addSubview(back);
  outer->addSubview(front);
  draw_all(*outer);
  EXPECT_EQ(order, "outer back inBack front ");
}

TEST(Display, ClipsEachViewToThoseAroundIt) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto middle = probe({{60, 60}, {30, 30}});
  const auto inner = probe({{20, -5}, {50, 50}}, true, [] {
    NSGraphicsContext::currentContext()->fill_rect({{-1000, -1000}, {3000, 3000}}, {});
  });
  middle->addSubview(inner);
  outer->addSubview(middle);
  PlainContext context;
  outer->display(context);
  EXPECT_EQ(inner->drawn, (Rects{{{0, 5}, {10, 30}}})) << "what can be seen of it";
  EXPECT_EQ(context.filled().back(), (NSRect{{80, 60}, {10, 30}})) << "whatever it draws";
}

TEST(Display, LeavesOutWhatHasNothingInThePart) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto left = probe({{0, 0}, {50, 100}});
  const auto right = probe({{50, 0}, {50, 100}});
  const auto none = probe({{10, 10}, {0, 10}});
  const auto outside = probe({{100, 0}, {10, 10}});
  for (const auto& view : {left, right, none, outside}) {
    outer->addSubview(view);
  }
  PlainContext context;
  outer->displayRect({{40, 20}, {10, 30}}, context);
  EXPECT_EQ(outer->drawn, (Rects{{{40, 20}, {10, 30}}}));
  EXPECT_EQ(left->drawn, (Rects{{{40, 20}, {10, 30}}}));
  EXPECT_TRUE(right->drawn.empty());
  EXPECT_TRUE(none->drawn.empty());
  EXPECT_TRUE(outside->drawn.empty());
}

TEST(Display, APartIsInTheViewsOwnCoordinates) {
  const auto outer = probe({{0, 0}, {100, 100}}, false);
  const auto inner = probe({{0, 50}, {100, 50}}, true);
  outer->addSubview(inner);
  PlainContext context;
  outer->displayRect({{0, 90}, {100, 10}}, context);
  EXPECT_EQ(inner->drawn, (Rects{{{0, 0}, {100, 10}}})) << "the top of both";
  EXPECT_EQ(context.filled(), (Rects{{{0, 0}, {100, 10}}, {{0, 0}, {100, 10}}}));
}

TEST(Display, IsDoneInWholePixels) {
  const auto view = probe({{0, 0}, {100, 100}});
  PlainContext pixels(2);
  view->displayRect({{10.5, 20.25}, {3, 3.5}}, pixels);
  EXPECT_EQ(view->drawn, (Rects{{{10, 20}, {4, 4}}}));
  PlainContext paper;
  view->displayRect({{10.5, 20.25}, {3, 3.5}}, paper);
  EXPECT_EQ(view->drawn.back(), (NSRect{{10.5, 20.25}, {3, 3.5}}));
}

TEST(Display, APartOutsideOfTheViewDrawsNothing) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto view = probe({{0, 0}, {10, 10}});
  PlainContext context;
  for (const NSRect& part : Rects{{{10, 0}, {5, 5}}, {}, {{0, 0}, {kNaN, 5}}, {{0, 0}, {5, -5}}}) {
    view->displayRect(part, context);
  }
  EXPECT_TRUE(view->drawn.empty());
  view->displayRect({{-kInfinity, -kInfinity}, {kInfinity, kInfinity}}, context);
  EXPECT_EQ(view->drawn, (Rects{{{0, 0}, {10, 10}}})) << "everything is all of the view";
}

TEST(Display, MakesTheContextCurrentOnItsThread) {
  EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
  PlainContext outer;
  PlainContext inner;
  NSGraphicsContext* seen = nullptr;
  NSGraphicsContext* after = nullptr;
  const auto other =
      probe({{0, 0}, {5, 5}}, true, [&] { seen = NSGraphicsContext::currentContext(); });
  const auto view = probe({{0, 0}, {5, 5}}, true, [&] {
    other->display(inner);
    after = NSGraphicsContext::currentContext();
  });
  view->display(outer);
  EXPECT_EQ(seen, &inner);
  EXPECT_EQ(after, &outer) << "one display inside the other";
  EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(Display, BringsTheContextBackAlsoWhenADrawingThrows) {
  PlainContext context;
  const auto outer = probe({{0, 0}, {10, 10}});
  const auto inner = probe({{0, 0}, {10, 10}}, false, [] { throw std::runtime_error("no"); });
  outer->addSubview(inner);
  EXPECT_THROW(outer->display(context), std::runtime_error);
  EXPECT_EQ(context.depth(), 0U);
  EXPECT_TRUE(context.isFlipped());
  EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
  EXPECT_TRUE(outer->needsDisplay()) << "it is not drawn";
  EXPECT_TRUE(inner->needsDisplay()) << "nor is the view that threw";
  EXPECT_THROW(outer->displayIfNeeded(context), std::runtime_error);
}

TEST(Display, WhatWasNotDrawnWaitsWhenADrawingThrows) {
  bool throws = true;
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto inner = probe({{60, 50}, {30, 30}}, true, [&] {
    if (throws) {
      throw std::runtime_error("no");
    }
  });
  outer->addSubview(inner);
  PlainContext context;
  EXPECT_THROW(outer->display(context), std::runtime_error);
  throws = false;
  EXPECT_EQ(drawn_again(*outer), (Rects{{{0, 0}, {100, 100}}, {{60, 50}, {30, 30}}}))
      << "all that was asked for, not just what the view that threw covers";
  throws = true;
  EXPECT_THROW(outer->displayRect({{65, 60}, {10, 15}}, context), std::runtime_error);
  throws = false;
  EXPECT_EQ(drawn_again(*inner), (Rects{{{5, 10}, {10, 15}}})) << "in the coordinates of that view";
}

TEST(Display, AViewMayGoWhileItIsDrawn) {
  PlainContext context;
  auto outer = probe({{0, 0}, {10, 10}});
  std::weak_ptr<NSView> gone = outer;
  auto inner = probe({{0, 0}, {10, 10}}, true, [&] { outer.reset(); });
  const auto second = probe({{0, 0}, {10, 10}});
  outer->addSubview(inner);
  outer->addSubview(second);
  outer->display(context);
  EXPECT_EQ(second->drawn.size(), 1U);
  EXPECT_TRUE(gone.expired());
  EXPECT_EQ(second->superview(), nullptr);
}

TEST(Display, ADrawingMayChangeTheTree) {
  PlainContext context;
  const auto outer = probe({{0, 0}, {10, 10}});
  const auto last = probe({{0, 0}, {10, 10}});
  const auto added = probe({{0, 0}, {10, 10}});
  std::weak_ptr<NSView> gone;
  {
    const auto inner = probe({{0, 0}, {10, 10}}, true, [&] {
      gone.lock()->addSubview(added);
      gone.lock()->removeFromSuperview();
      outer->setFrameSize({3, 3});
    });
    gone = inner;
    outer->addSubview(inner);
  }
  outer->addSubview(last);
  outer->display(context);
  EXPECT_EQ(outer->subviews().size(), 1U);
  EXPECT_EQ(added->drawn.size(), 1U) << "added to a view before its subviews come";
  EXPECT_EQ(last->drawn.size(), 1U);
  EXPECT_TRUE(gone.expired());
}

TEST(NeedsDisplay, WhatWasDrawnWaitsNoMore) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto inner = probe({{10, 10}, {20, 20}});
  outer->addSubview(inner);
  EXPECT_TRUE(outer->needsDisplay());
  EXPECT_TRUE(inner->needsDisplay());
  draw_all(*outer);
  EXPECT_FALSE(outer->needsDisplay());
  EXPECT_FALSE(inner->needsDisplay());
  EXPECT_EQ(drawn_again(*outer), Rects{});
}

TEST(NeedsDisplay, APartWaitsUntilAllOfItIsDrawn) {
  const auto view = probe({{0, 0}, {100, 100}});
  draw_all(*view);
  view->setNeedsDisplayInRect({{10, 10}, {10, 10}});
  PlainContext context;
  view->displayRect({{0, 0}, {15, 100}}, context);
  EXPECT_TRUE(view->needsDisplay()) << "half of it";
  view->displayRect({{5, 5}, {50, 50}}, context);
  EXPECT_FALSE(view->needsDisplay());
}

TEST(NeedsDisplay, PartsAreJoined) {
  const auto view = probe({{0, 0}, {100, 100}});
  draw_all(*view);
  view->setNeedsDisplayInRect({{10, 20}, {10, 10}});
  view->setNeedsDisplayInRect({{30, 5}, {100, 10}});
  view->setNeedsDisplayInRect({{200, 200}, {10, 10}});
  EXPECT_EQ(drawn_again(*view), (Rects{{{10, 5}, {90, 25}}})) << "as far as the view reaches";
}

TEST(NeedsDisplay, WaitsInTheViewsAroundToo) {
  for (const bool outerFlipped : {true, false}) {
    for (const bool innerFlipped : {true, false}) {
      const auto outer = probe({{0, 0}, {100, 100}}, outerFlipped);
      const auto sibling = probe({{0, 0}, {100, 100}});
      const auto inner = probe({{10, outerFlipped ? 20.0 : 40.0}, {40, 40}}, innerFlipped);
      outer->addSubview(inner);
      outer->addSubview(sibling);
      draw_all(*outer);
      // Five from the top of the inner view, whose top is 20 below that of the outer one.
      inner->setNeedsDisplayInRect({{30, innerFlipped ? 5.0 : 34.0}, {100, 1}});
      const NSRect part{{40, 25}, {10, 1}};
      EXPECT_EQ(drawn_again(*outer), (Rects{part, part, part}))
          << "what is behind it and what is in front";
      EXPECT_FALSE(inner->needsDisplay());
    }
  }
}

TEST(NeedsDisplay, StopsWhereItIsHidden) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto inner = probe({{90, 0}, {40, 40}});
  outer->addSubview(inner);
  draw_all(*outer);
  inner->setNeedsDisplayInRect({{20, 0}, {20, 20}});
  EXPECT_TRUE(inner->needsDisplay());
  EXPECT_FALSE(outer->needsDisplay());
}

TEST(NeedsDisplay, IsSetAndTakenBack) {
  const auto view = probe({{0, 0}, {100, 100}});
  draw_all(*view);
  view->setNeedsDisplay(true);
  EXPECT_EQ(drawn_again(*view), (Rects{{{0, 0}, {100, 100}}}));
  view->setNeedsDisplay(true);
  view->setNeedsDisplay(false);
  EXPECT_FALSE(view->needsDisplay());
}

TEST(NeedsDisplay, WhatADrawingMarksWaits) {
  auto view = std::shared_ptr<Probe>();
  view = probe({{0, 0}, {100, 100}}, true, [&] { view->setNeedsDisplayInRect({{1, 2}, {3, 4}}); });
  draw_all(*view);
  EXPECT_EQ(drawn_again(*view), (Rects{{{1, 2}, {3, 4}}}));
}

TEST(NeedsDisplay, WhatAChangeOfTheTreeUncoversAndCovers) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto inner = std::make_shared<NSView>(NSRect{{10, 10}, {10, 10}});
  draw_all(*outer);
  outer->addSubview(inner);
  EXPECT_EQ(drawn_again(*outer), (Rects{{{10, 10}, {10, 10}}})) << "added";
  inner->setFrame({{15, 30}, {10, 5}});
  EXPECT_EQ(drawn_again(*outer), (Rects{{{10, 10}, {15, 25}}})) << "moved: both places";
  inner->setFrameSize({20, 10});
  EXPECT_EQ(drawn_again(*outer), (Rects{{{15, 30}, {20, 10}}})) << "grown";
  inner->setFrameSize({5, 5});
  EXPECT_EQ(drawn_again(*outer), (Rects{{{15, 30}, {20, 10}}})) << "shrunk: where it was";
  inner->removeFromSuperview();
  EXPECT_EQ(drawn_again(*outer), (Rects{{{15, 30}, {5, 5}}})) << "removed";
}

TEST(NeedsDisplay, AViewOfAnotherSizeIsDrawnWhole) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto inner = probe({{10, 10}, {10, 10}});
  inner->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
  outer->addSubview(inner);
  draw_all(*outer);
  outer->setFrameSize({120, 95});
  EXPECT_TRUE(inner->needsDisplay());
  EXPECT_EQ(drawn_again(*outer), (Rects{{{0, 0}, {120, 95}}, {{10, 10}, {30, 5}}}));
}

TEST(NeedsDisplay, AViewThatKeepsItsSizeWaitsForNothing) {
  const auto outer = probe({{0, 0}, {100, 100}});
  const auto fixed = probe({{10, 10}, {10, 10}});
  outer->addSubview(fixed);
  draw_all(*outer);
  outer->setFrameSize({120, 95});
  EXPECT_TRUE(outer->needsDisplay());
  EXPECT_FALSE(fixed->needsDisplay());
}

/// A chain of views, each with its subview one unit in from the corner.
std::shared_ptr<Probe> chain(int length, const std::shared_ptr<Probe>& innermost) {
  std::shared_ptr<Probe> view = innermost;
  for (int i = 1; i < length; ++i) {
    const double side = view->frame().size.width;
    view->setFrame({{1, 1}, {side, side}});
    view->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    const auto around = probe({{0, 0}, {side + 1, side + 1}}, i % 3 != 0);
    around->addSubview(view);
    view = around;
  }
  return view;
}

TEST(DeepTrees, AreDrawnMarkedResizedAndReleased) {
  constexpr int kDepth = 200'000;  // calls one inside the other would use up the stack
  auto innermost = probe({{0, 0}, {10, 10}});
  const std::weak_ptr<NSView> seen = innermost;
  auto outermost = chain(kDepth, innermost);
  EXPECT_EQ(outermost->frame().size, (NSSize{kDepth + 9, kDepth + 9}));
  PlainContext context;
  outermost->display(context);
  ASSERT_EQ(context.filled().size(), static_cast<std::size_t>(kDepth));
  EXPECT_EQ(context.filled().back().origin.x, kDepth - 1.0);
  EXPECT_EQ(context.filled().back().size, (NSSize{10, 10}));

  innermost->setNeedsDisplayInRect({{1, 1}, {1, 1}});
  EXPECT_EQ(drawn_again(*outermost).back().size, (NSSize{1, 1}));

  outermost->setFrameSize({kDepth + 109, kDepth + 59});
  EXPECT_EQ(innermost->frame().size, (NSSize{110, 60}));

  innermost.reset();
  outermost.reset();
  EXPECT_TRUE(seen.expired());
}

TEST(DeepTrees, BroadOnesToo) {
  const auto outer = probe({{0, 0}, {100, 100}});
  for (int i = 0; i < 10'000; ++i) {
    outer->addSubview(probe({{static_cast<double>(i % 100), 0}, {1, 1}}));
  }
  PlainContext context;
  outer->display(context);
  EXPECT_EQ(context.filled().size(), 10'001U);
  EXPECT_EQ(context.filled()[100], (NSRect{{99, 0}, {1, 1}})) << "in their order";
}

}  // namespace
}  // namespace quoll::platform
