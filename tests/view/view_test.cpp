#include "quoll/view/view.h"

#include <gtest/gtest.h>

#include <limits>

#include "quoll/foundation/exception.h"

namespace quoll::platform {
namespace {

using Views = std::vector<std::shared_ptr<NSView>>;
constexpr auto kBothSides = NSViewWidthSizable | NSViewHeightSizable;

std::shared_ptr<NSView> view_at(const NSRect& frame) {
  return std::make_shared<NSView>(frame);
}

TEST(NSView, IsEmptyAtFirst) {
  const auto view = std::make_shared<NSView>();
  EXPECT_EQ(view->frame(), NSRect{});
  EXPECT_EQ(view->bounds(), NSRect{});
  EXPECT_FALSE(view->isFlipped());
  EXPECT_EQ(view->autoresizingMask(), 0U);
  EXPECT_EQ(view->superview(), nullptr);
  EXPECT_TRUE(view->subviews().empty());
  EXPECT_FALSE(view->needsDisplay()) << "nothing of it can be seen";
}

TEST(NSView, HasItsFrame) {
  const auto view = view_at({{3, 4}, {5, 6}});
  EXPECT_EQ(view->frame(), (NSRect{{3, 4}, {5, 6}}));
  EXPECT_EQ(view->bounds(), (NSRect{{0, 0}, {5, 6}}));
  EXPECT_TRUE(view->needsDisplay()) << "a new view is not drawn yet";
}

TEST(NSView, ItsFrameIsUsable) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const NSRect odd{{kNaN, -kInfinity}, {-1, kInfinity}};
  const NSRect usable{{0, -kLargestCoordinate}, {0, 2 * kLargestCoordinate}};
  EXPECT_EQ(view_at(odd)->frame(), usable);
  const auto view = view_at({{1, 1}, {1, 1}});
  view->setFrame(odd);
  EXPECT_EQ(view->frame(), usable);
  view->setFrameSize({kNaN, -5});
  EXPECT_EQ(view->frame().size, (NSSize{0, 0}));
}

TEST(NSView, SubviewsStandFromBackToFront) {
  const auto around = view_at({{0, 0}, {10, 10}});
  const auto back = view_at({});
  const auto front = view_at({});
  around->addSubview(back);
  around->addSubview(front);
  EXPECT_EQ(around->subviews(), (Views{back, front}));
  EXPECT_EQ(back->superview(), around);
  around->addSubview(back);
  EXPECT_EQ(around->subviews(), (Views{front, back})) << "added again it comes to the front";
  around->addSubview(around->subviews().front());
  EXPECT_EQ(around->subviews(), (Views{back, front})) << "by the superview's own pointer";
}

TEST(NSView, IsInOneSuperview) {
  const auto first = view_at({});
  const auto second = view_at({});
  const auto view = view_at({});
  first->addSubview(view);
  second->addSubview(view);
  EXPECT_TRUE(first->subviews().empty());
  EXPECT_EQ(second->subviews(), Views{view});
  EXPECT_EQ(view->superview(), second);
  view->removeFromSuperview();
  EXPECT_TRUE(second->subviews().empty());
  EXPECT_EQ(view->superview(), nullptr);
  view->removeFromSuperview();
}

TEST(NSView, RefusesToBeInItself) {
  const auto outer = view_at({});
  const auto middle = view_at({});
  const auto inner = view_at({});
  outer->addSubview(middle);
  middle->addSubview(inner);
  for (const auto& [into, view] :
       {std::pair(outer, outer), std::pair(inner, outer), std::pair(inner, middle),
        std::pair(outer, Views::value_type())}) {
    try {
      into->addSubview(view);
      ADD_FAILURE() << "not refused";
    } catch (const foundation::NSException& exception) {
      EXPECT_EQ(exception.name(), foundation::NSInvalidArgumentException);
    }
  }
  EXPECT_EQ(outer->subviews(), Views{middle});
  EXPECT_EQ(middle->subviews(), Views{inner});
  EXPECT_TRUE(inner->subviews().empty());
  inner->addSubview(view_at({}));
  EXPECT_EQ(inner->subviews().size(), 1U) << "a stranger is welcome";
}

TEST(NSView, OwnsItsSubviewsAndNotItsSuperview) {
  auto around = view_at({});
  auto view = view_at({});
  const std::weak_ptr<NSView> seen = view;
  around->addSubview(view);
  const NSView* const bare = view.get();
  view.reset();
  EXPECT_EQ(seen.lock().get(), bare);
  view = seen.lock();
  around.reset();
  EXPECT_EQ(view->superview(), nullptr);
  view.reset();
  EXPECT_TRUE(seen.expired());
}

TEST(NSView, MayGoWhenItLeavesItsSuperview) {
  const auto around = view_at({{0, 0}, {10, 10}});
  around->addSubview(view_at({{0, 0}, {10, 10}}));
  const std::weak_ptr<NSView> seen = around->subviews().front();
  around->subviews().front()->removeFromSuperview();
  EXPECT_TRUE(seen.expired());
  EXPECT_TRUE(around->subviews().empty());
}

TEST(Autoresizing, FollowsByTheSameDifference) {
  const struct {
    unsigned mask;
    NSSize size;
    NSSize follows;
    const char* reason;
  } rows[] = {
      {18, {130, 90}, {70, 50}, "both sides grow by the same"},
      {18, {90, 50}, {30, 10}, "and shrink"},
      {18, {100.5, 59.75}, {40.5, 19.75}, "by parts of units too"},
      {18, {100, 60}, {40, 20}, "the same size changes nothing"},
      {18, {61, 41}, {1, 1}, "as far as there is something"},
      {18, {50, 35}, {0, 0}, "never below zero"},
      {18, {-5, 60}, {0, 20}, "a superview of less than nothing is one of nothing"},
      {2, {130, 90}, {70, 20}, "the width alone"},
      {16, {130, 90}, {40, 50}, "the height alone"},
      {0, {130, 90}, {40, 20}, "neither"},
      {45, {130, 90}, {40, 20}, "the other bits mean nothing"},
  };
  for (const auto& row : rows) {
    const auto around = view_at({{7, 8}, {100, 60}});
    const auto view = view_at({{10, 5}, {40, 20}});
    view->setAutoresizingMask(static_cast<NSAutoresizingMaskOptions>(row.mask));
    around->addSubview(view);
    around->setFrameSize(row.size);
    EXPECT_EQ(view->frame(), (NSRect{{10, 5}, row.follows})) << row.reason;
    EXPECT_EQ(around->frame(), (NSRect{{7, 8}, usable(row.size)})) << row.reason;
    EXPECT_EQ(view->autoresizingMask(), row.mask);
  }
  EXPECT_EQ(kBothSides, 18U);
}

TEST(Autoresizing, WhatWasCutAtZeroGrowsFromZero) {
  const auto around = view_at({{0, 0}, {100, 100}});
  const auto view = view_at({{0, 0}, {50, 80}});
  view->setAutoresizingMask(kBothSides);
  around->addSubview(view);
  around->setFrameSize({10, 10});
  EXPECT_EQ(view->frame().size, (NSSize{0, 0}));
  around->setFrameSize({100, 100});
  EXPECT_EQ(view->frame().size, (NSSize{90, 90}));
}

TEST(Autoresizing, GoesOnInside) {
  const auto outer = view_at({{0, 0}, {100, 100}});
  const auto fixed = view_at({{0, 0}, {50, 50}});
  const auto inFixed = view_at({{0, 0}, {50, 50}});
  const auto follows = view_at({{0, 0}, {50, 5}});
  const auto inFollows = view_at({{0, 0}, {10, 10}});
  inFixed->setAutoresizingMask(kBothSides);
  follows->setAutoresizingMask(kBothSides);
  inFollows->setAutoresizingMask(kBothSides);
  fixed->addSubview(inFixed);
  follows->addSubview(inFollows);
  outer->addSubview(fixed);
  outer->addSubview(follows);
  outer->setFrame({{0, 0}, {110, 90}});
  EXPECT_EQ(inFixed->frame().size, (NSSize{50, 50})) << "its own superview kept its size";
  EXPECT_EQ(follows->frame().size, (NSSize{60, 0}));
  EXPECT_EQ(inFollows->frame().size, (NSSize{20, 5})) << "by what its superview really lost";
}

TEST(Autoresizing, ReachesEveryViewAndWhatIsInIt) {
  const auto outer = view_at({{0, 0}, {100, 100}});
  Views inside;
  for (int i = 0; i < 3; ++i) {
    const auto view = view_at({{0, 0}, {50, 50}});
    const auto inner = view_at({{0, 0}, {20, 20}});
    view->setAutoresizingMask(kBothSides);
    inner->setAutoresizingMask(kBothSides);
    view->addSubview(inner);
    outer->addSubview(view);
    inside.push_back(inner);
  }
  outer->setFrameSize({110, 90});
  for (std::size_t i = 0; i < inside.size(); ++i) {
    EXPECT_EQ(outer->subviews()[i]->frame().size, (NSSize{60, 40})) << i;
    EXPECT_EQ(inside[i]->frame().size, (NSSize{30, 10})) << i << ", inside";
  }
}

TEST(Autoresizing, AMoveResizesNothing) {
  const auto around = view_at({{0, 0}, {100, 100}});
  const auto view = view_at({{1, 2}, {3, 4}});
  view->setAutoresizingMask(kBothSides);
  around->addSubview(view);
  around->setFrame({{50, 60}, {100, 100}});
  EXPECT_EQ(around->frame(), (NSRect{{50, 60}, {100, 100}}));
  EXPECT_EQ(view->frame(), (NSRect{{1, 2}, {3, 4}}));
}

}  // namespace
}  // namespace quoll::platform
