#include "quoll/view/geometry.h"

#include <gtest/gtest.h>

#include <limits>

namespace quoll::platform {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kFar = kLargestCoordinate;

TEST(Usable, TakesOutWhatCannotBeWorkedWith) {
  const struct {
    NSRect given;
    NSRect usable;
    const char* reason;
  } rows[] = {
      {{{1.5, -2.5}, {3.25, 4}}, {{1.5, -2.5}, {3.25, 4}}, "what is usable stays"},
      {{{0, 0}, {0, 0}}, {{0, 0}, {0, 0}}, "zero is a size"},
      {{{1, 2}, {-3, 4}}, {{1, 2}, {0, 4}}, "a negative width is none; the origin stays"},
      {{{1, 2}, {3, -0.5}}, {{1, 2}, {3, 0}}, "so is a negative height"},
      {{{1, 2}, {kNaN, 4}}, {{1, 2}, {0, 4}}, "NaN is no width"},
      {{{1, 2}, {3, kNaN}}, {{1, 2}, {3, 0}}, "nor a height"},
      {{{kNaN, 2}, {3, 4}}, {{0, 2}, {3, 4}}, "nor an x"},
      {{{1, kNaN}, {3, 4}}, {{1, 0}, {3, 4}}, "nor a y"},
      {{{kInfinity, -kInfinity}, {3, 4}}, {{kFar, -kFar}, {3, 4}}, "far away is far away"},
      {{{kFar, -kFar}, {2 * kFar, 2 * kFar}},
       {{kFar, -kFar}, {2 * kFar, 2 * kFar}},
       "the bounds themselves stay"},
      {{{-kInfinity, -kInfinity}, {kInfinity, kInfinity}},
       {{-kFar, -kFar}, {2 * kFar, 2 * kFar}},
       "the whole plane reaches from end to end"},
      {{{1e300, -1e300}, {1e300, -1e300}}, {{kFar, -kFar}, {2 * kFar, 0}}, "so is too far"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(usable(row.given), row.usable) << row.reason;
    EXPECT_EQ(usable(row.given.size), row.usable.size) << row.reason;
  }
  EXPECT_EQ(kLargestCoordinate, 1073741824.0);
}

TEST(Rectangles, MeetJoinAndContain) {
  const NSRect square{{0, 0}, {10, 10}};
  const struct {
    NSRect other;
    NSRect common;
    NSRect joined;
    bool inside;
    const char* reason;
  } rows[] = {
      {{{2, 3}, {4, 5}}, {{2, 3}, {4, 5}}, square, true, "inside"},
      {square, square, square, true, "the same"},
      {{{5, 6}, {10, 20}}, {{5, 6}, {5, 4}}, {{0, 0}, {15, 26}}, false, "over a corner"},
      {{{-5, -6}, {10, 10}}, {{0, 0}, {5, 4}}, {{-5, -6}, {15, 16}}, false, "over the other one"},
      {{{10, 0}, {5, 10}}, {}, {{0, 0}, {15, 10}}, false, "side by side have nothing in common"},
      {{{0, 10}, {10, 5}}, {}, {{0, 0}, {10, 15}}, false, "nor above one another"},
      {{{-1, 2}, {12, 3}}, {{0, 2}, {10, 3}}, {{-1, 0}, {12, 10}}, false, "across"},
      {{{2, -1}, {3, 12}}, {{2, 0}, {3, 10}}, {{0, -1}, {10, 12}}, false, "along"},
      {{{0, 0}, {10.5, 10}}, square, {{0, 0}, {10.5, 10}}, false, "half a unit wider"},
      {{{0, 0}, {10, 10.5}}, square, {{0, 0}, {10, 10.5}}, false, "half a unit higher"},
      {{{-0.5, 0}, {10, 10}}, {{0, 0}, {9.5, 10}}, {{-0.5, 0}, {10.5, 10}}, false, "to the left"},
      {{{0, -0.5}, {10, 10}}, {{0, 0}, {10, 9.5}}, {{0, -0.5}, {10, 10.5}}, false, "above"},
      {{{50, 60}, {0, 5}}, {}, square, false, "an empty one does not count"},
      {{{3, 3}, {4, 0}}, {}, square, true, "an empty one inside is inside"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(intersection(square, row.other), row.common) << row.reason;
    EXPECT_EQ(intersection(row.other, square), row.common) << row.reason;
    EXPECT_EQ(union_of(square, row.other), row.joined) << row.reason;
    EXPECT_EQ(union_of(row.other, square), row.joined) << row.reason;
    EXPECT_EQ(contains(square, row.other), row.inside) << row.reason;
  }
}

TEST(Rectangles, AreEmptyWithoutASide) {
  EXPECT_TRUE(is_empty({}));
  EXPECT_TRUE(is_empty({{1, 1}, {0, 5}}));
  EXPECT_TRUE(is_empty({{1, 1}, {5, 0}}));
  EXPECT_FALSE(is_empty({{1, 1}, {0.1, 0.1}}));
}

}  // namespace
}  // namespace quoll::platform
