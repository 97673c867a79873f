#include "StripLayout.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cmath>

using namespace velto;

TEST(Ticks, StartOnWholeDevicePixelsInsideTheStrip) {
  EXPECT_EQ(StripLayout::tickLeft(0, 1, 739, 1), 0);
  EXPECT_EQ(StripLayout::tickLeft(739, 1, 739, 1), 738);
  EXPECT_EQ(StripLayout::tickLeft(100.3, 1, 739, 1), 100);
  EXPECT_EQ(StripLayout::tickLeft(100.3, 1, 739, 2), 100); // 99.8 points are 199.6 pixels
  EXPECT_EQ(StripLayout::tickLeft(100.6, 1, 739, 2), 100);
  EXPECT_EQ(StripLayout::tickLeft(100.8, 1, 739, 2), 100.5);
}

TEST(Ticks, EndWhereTheStripEnds) {
  for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0})
    for (const double strip : {560.0, 564.0, 739.0, 740.0, 741.0}) {
      const double width = std::round(ratio) / ratio;
      EXPECT_NEAR((StripLayout::tickLeft(strip, width, strip, ratio) + width) * ratio,
                  std::round(strip * ratio), 1e-6)
          << strip << " at " << ratio;
    }
}

RC_GTEST_PROP(TickLaws, StartOnAPixelNearTheirPosition, ()) {
  const double ratio = *rc::gen::element(1.0, 1.25, 1.5, 2.0, 3.0);
  const double strip = *rc::gen::inRange(200, 2000);
  const double x = *rc::gen::inRange(0, 10000) * strip / 10000;
  const double left = StripLayout::tickLeft(x, 1, strip, ratio);
  RC_ASSERT(std::abs(left * ratio - std::round(left * ratio)) < 1e-6);
  RC_ASSERT(left >= 0);
  RC_ASSERT(left <= strip);
  RC_ASSERT(std::abs(left + 0.5 - x) <= 1);
}

TEST(MarkerBars, StartOnePointBeforeTheirPositionEvenAtTheEnds) {
  EXPECT_EQ(StripLayout::markerLeft(0, 1), -1);
  EXPECT_EQ(StripLayout::markerLeft(739, 1), 738);
  EXPECT_EQ(StripLayout::markerLeft(100.3, 1), 99);
  EXPECT_EQ(StripLayout::markerLeft(100.3, 2), 99.5);
  EXPECT_EQ(StripLayout::markerLeft(0, 1.25), -0.8);
  EXPECT_EQ(StripLayout::markerLeft(739, 1.5), 738);
  EXPECT_EQ(StripLayout::markerLeft(0, 2), -1);
}

TEST(MarkerBars, AreWholePixelsWide) {
  EXPECT_EQ(StripLayout::markerWidthAt(1), 2);
  EXPECT_EQ(StripLayout::markerWidthAt(1.25), 2.4);
  EXPECT_EQ(StripLayout::markerWidthAt(1.5), 2);
  EXPECT_DOUBLE_EQ(StripLayout::markerWidthAt(1.75), 4 / 1.75);
  EXPECT_EQ(StripLayout::markerWidthAt(2), 2);
}

RC_GTEST_PROP(MarkerBarLaws, StartOnThePixelNearestToTheirPosition, ()) {
  const double ratio = *rc::gen::element(1.0, 1.25, 1.5, 1.75, 2.0, 3.0);
  const double x = *rc::gen::inRange(0, 200001) / 100.0;
  const double left = StripLayout::markerLeft(x, ratio);
  const double width = StripLayout::markerWidthAt(ratio);
  RC_ASSERT(std::abs(left * ratio - std::round(left * ratio)) < 1e-6);
  RC_ASSERT(std::abs(left + width / 2 - x) <= 0.5 / ratio + 1e-9);
}
