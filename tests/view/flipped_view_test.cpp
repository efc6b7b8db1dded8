#include "quoll/view/flipped_view.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <stdexcept>
#include <thread>

#include "quoll/foundation/exception.h"
#include "quoll/platform/desktop.h"
#include "tests/support/plain_context.h"

namespace quoll {
namespace {

using platform::NSGraphicsContext;
using platform::NSRect;
using platform::NSView;
using test::PlainContext;
using Rects = std::vector<NSRect>;

constexpr NSRect kFrame{{3, 4}, {50, 30}};

TEST(FlippedView, IsMadeWithAFrame) {
  const auto view = FlippedView::initWithFrame(kFrame);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->frame(), kFrame);
  EXPECT_EQ(view->autoresizingMask(), 18U);
  EXPECT_TRUE(view->isFlipped());
  EXPECT_FALSE(view->drawingBlock());
  EXPECT_EQ(view->viewId(), std::nullopt);
}

TEST(FlippedView, IsMadeWithAFrameAndABlock) {
  int draws = 0;
  const auto view =
      FlippedView::initWithFrame(kFrame, [&](const auto&, const NSRect&) { ++draws; });
  EXPECT_EQ(view->frame(), kFrame);
  EXPECT_EQ(view->autoresizingMask(), 18U);
  EXPECT_TRUE(view->isFlipped());
  EXPECT_EQ(draws, 0) << "making it draws nothing";
  view->drawRect({});
  EXPECT_EQ(draws, 1);
}

TEST(FlippedView, ANullBlockIsNone) {
  const auto view = FlippedView::initWithFrame(kFrame, nullptr);
  EXPECT_FALSE(view->drawingBlock());
  EXPECT_EQ(view->autoresizingMask(), 18U);
}

TEST(FlippedView, WithoutABlockDrawsNothingAndRaisesNothing) {
  const auto view = FlippedView::initWithFrame(kFrame);
  PlainContext context;
  view->drawRect(kFrame);
  view->display(context);
  EXPECT_TRUE(context.filled().empty());
}

TEST(FlippedView, TheBlockGetsTheViewAndTheRectangleAsItIs) {
  std::shared_ptr<FlippedView> seen;
  NSRect received;
  const auto view = FlippedView::initWithFrame(kFrame, [&](const auto& self, const NSRect& dirty) {
    seen = self;
    received = dirty;
  });
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const NSRect& dirty : Rects{{{1.5, -2.25}, {1000, 0.125}},
                                   {},
                                   {{-1, -1}, {-3, -4}},
                                   {{kInfinity, -kInfinity}, {kInfinity, 1e300}}}) {
    view->drawRect(dirty);
    EXPECT_EQ(received, dirty);
    EXPECT_EQ(seen, view);
  }
}

TEST(FlippedView, DrawsInFlippedCoordinates) {
  const auto around = std::make_shared<NSView>(NSRect{{0, 0}, {100, 100}});
  const auto view = FlippedView::initWithFrame({{10, 20}, {50, 30}}, [](const auto&, const auto&) {
    EXPECT_TRUE(NSGraphicsContext::currentContext()->isFlipped());
    NSGraphicsContext::currentContext()->fill_rect({{0, 0}, {50, 1}}, {});
  });
  around->addSubview(view);
  PlainContext context;
  around->display(context);
  EXPECT_EQ(context.filled(), (Rects{{{10, 50}, {50, 1}}})) << "a line along its top edge";
}

TEST(FlippedView, TheNextDrawUsesTheNewBlock) {
  std::string order;
  const auto view =
      FlippedView::initWithFrame(kFrame, [&](const auto&, const auto&) { order += "first "; });
  view->drawRect(kFrame);
  view->drawingBlock = [&](const auto&, const auto&) { order += "second "; };
  view->drawRect(kFrame);
  view->drawingBlock = nullptr;
  view->drawRect(kFrame);
  EXPECT_EQ(order, "first second ");
}

TEST(FlippedView, ABlockMayReplaceItself) {
  const auto alive = std::make_shared<int>(7);
  const std::weak_ptr<int> seen = alive;
  int drawn = 0;
  const auto view = FlippedView::initWithFrame(
      kFrame, [&drawn, kept = alive](const std::shared_ptr<FlippedView>& self, const auto&) {
        self->drawingBlock = [](const auto&, const auto&) {};
        drawn = *kept;  // what the block holds is still there
      });
  view->drawRect(kFrame);
  view->drawRect(kFrame);
  EXPECT_EQ(drawn, 7);
  EXPECT_EQ(seen.use_count(), 1) << "the first block is gone";
}

TEST(FlippedView, ABlockMayDropTheViewsLastReference) {
  std::weak_ptr<FlippedView> seen;
  bool alive = false;
  auto view = FlippedView::initWithFrame(kFrame);
  seen = view;
  view->drawingBlock = [&](const std::shared_ptr<FlippedView>& self, const auto&) {
    view.reset();
    alive = self->frame() == kFrame && !seen.expired();
  };
  view->drawRect(kFrame);
  EXPECT_TRUE(alive) << "until the block returns";
  EXPECT_TRUE(seen.expired()) << "and no longer";
}

TEST(FlippedView, ABlockMayDropTheViewThatIsDisplayed) {
  std::weak_ptr<FlippedView> seen;
  auto view = FlippedView::initWithFrame(kFrame);
  seen = view;
  view->drawingBlock = [&](const auto&, const auto&) { view.reset(); };
  PlainContext context;
  view->display(context);
  EXPECT_TRUE(seen.expired());
  EXPECT_EQ(context.depth(), 0U);
}

TEST(FlippedView, WhatABlockThrowsPassesAndNothingIsKept) {
  auto view = FlippedView::initWithFrame(
      kFrame, [](const auto&, const auto&) { foundation::raise_invalid_argument("no"); });
  const std::weak_ptr<FlippedView> seen = view;
  EXPECT_THROW(view->drawRect(kFrame), foundation::NSException);
  EXPECT_EQ(view.use_count(), 1) << "the reference for the block is released";
  view->drawingBlock = [](const auto&, const auto&) { throw std::runtime_error("no"); };
  PlainContext context;
  EXPECT_THROW(view->display(context), std::runtime_error);
  view.reset();
  EXPECT_TRUE(seen.expired());
}

TEST(FlippedView, IsNotKeptByItsBlock) {
  auto view = FlippedView::initWithFrame(kFrame, [](const auto&, const auto&) {});
  view->drawRect(kFrame);
  EXPECT_EQ(view.use_count(), 1);
}

TEST(FlippedView, RefreshDoesNothing) {
  int draws = 0;
  const auto view =
      FlippedView::initWithFrame(kFrame, [&](const auto&, const NSRect&) { ++draws; });
  PlainContext context;
  view->display(context);
  view->Refresh();
  EXPECT_EQ(draws, 1);
  EXPECT_FALSE(view->needsDisplay());
}

TEST(FlippedView, KeepsAnIdentifierForItsOwner) {
  const auto view = FlippedView::initWithFrame(kFrame);
  view->viewId = "page";
  EXPECT_EQ(view->viewId(), "page");
  view->viewId = std::nullopt;
  EXPECT_EQ(view->viewId(), std::nullopt);
}

TEST(FlippedView, FollowsItsSuperviewsSize) {
  const auto around = FlippedView::initWithFrame({{0, 0}, {100, 100}});
  const auto view = FlippedView::initWithFrame({{10, 10}, {50, 20}});
  around->addSubview(view);
  around->setFrameSize({120.5, 90});
  EXPECT_EQ(view->frame(), (NSRect{{10, 10}, {70.5, 10}}));
  around->setFrameSize({20, 20});
  EXPECT_EQ(view->frame(), (NSRect{{10, 10}, {0, 0}}));
}

/// Keeps who asked to be removed, and what was true then.
class RemovalCenter final : public platform::NSNotificationCenter {
 public:
  explicit RemovalCenter(std::function<void()> at_removal) : at_removal_(std::move(at_removal)) {}
  void postNotificationName(std::string_view /*name*/, const foundation::Value& /*o*/) override {}
  void addObserver(const void* /*observer*/, std::string_view /*name*/,
                   const foundation::Value& /*object*/, Block /*block*/) override {}
  void removeObserver(const void* observer) override {
    removed.push_back(observer);
    at_removal_();
  }
  std::vector<const void*> removed;

 private:
  std::function<void()> at_removal_;
};

TEST(FlippedView, GoesOutOfTheNotificationCenterAfterItsBlock) {
  const auto held = std::make_shared<int>();
  long holders = 0;
  const auto center = std::make_shared<RemovalCenter>([&] { holders = held.use_count(); });
  const platform::ScopedDesktop scoped({.notifications = center});
  auto view = FlippedView::initWithFrame(kFrame, [held](const auto&, const auto&) {});
  const void* const observer = view.get();
  EXPECT_TRUE(center->removed.empty());
  view.reset();
  EXPECT_EQ(center->removed, std::vector<const void*>{observer});
  EXPECT_EQ(holders, 1) << "the block was dropped before";
}

TEST(FlippedView, WithoutABlockGoesOutOfTheNotificationCenterToo) {
  const auto center = std::make_shared<RemovalCenter>([] {});
  const platform::ScopedDesktop scoped({.notifications = center});
  FlippedView::initWithFrame(kFrame).reset();
  EXPECT_EQ(center->removed.size(), 1U);
}

TEST(FlippedView, IsNotNotifiedOnceItIsGone) {
  const platform::ScopedDesktop scoped({});
  const auto center = platform::NSNotificationCenter::defaultCenter();
  std::string calls;
  auto view = FlippedView::initWithFrame(kFrame);
  const auto other = FlippedView::initWithFrame(kFrame);
  center->addObserver(view.get(), "a", nullptr, [&](auto, const auto&) { calls += "named "; });
  center->addObserver(view.get(), "", nullptr, [&](auto, const auto&) { calls += "all "; });
  center->addObserver(other.get(), "a", nullptr, [&](auto, const auto&) { calls += "other "; });
  center->postNotificationName("a", nullptr);
  EXPECT_EQ(calls, "named all other ");
  calls.clear();
  view.reset();
  center->postNotificationName("a", nullptr);
  EXPECT_EQ(calls, "other ");
}

TEST(FlippedView, WhatItsBlockOwnsMayStillPostWhenItGoes) {
  const platform::ScopedDesktop scoped({});
  std::string calls;
  auto view = FlippedView::initWithFrame(kFrame);
  platform::NSNotificationCenter::defaultCenter()->addObserver(
      view.get(), "gone", nullptr, [&](auto, const auto&) { calls += "heard"; });
  const auto post = [](int* number) {
    platform::NSNotificationCenter::defaultCenter()->postNotificationName("gone", nullptr);
    delete number;
  };
  view->drawingBlock = [owned = std::shared_ptr<int>(new int, post)](const auto&, const auto&) {};
  view.reset();
  EXPECT_EQ(calls, "heard");
}

TEST(FlippedView, ItsPropertiesMayBeSetFromOtherThreads) {
  const auto view = FlippedView::initWithFrame(kFrame);
  std::atomic<int> draws = 0;
  std::atomic<bool> ended = false;
  std::thread setter([&] {
    for (int i = 0; i < 2000; ++i) {
      view->drawingBlock = i % 3 == 0 ? FlippedView::DrawingBlock()
                                      : [&draws, i](const auto&, const auto&) { draws += i % 2; };
      view->viewId = i % 2 == 0 ? "a" : "a rather longer identifier of this view";
    }
    ended = true;
  });
  while (!ended) {
    view->drawRect(kFrame);
    const auto id = view->viewId();
    EXPECT_TRUE(!id || *id == "a" || *id == "a rather longer identifier of this view") << *id;
  }
  setter.join();
  draws = 0;
  view->drawRect(kFrame);
  EXPECT_EQ(draws, 1) << "the last block that was set";
}

}  // namespace
}  // namespace quoll
