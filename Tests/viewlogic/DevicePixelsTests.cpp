#include "DevicePixels.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velto;

TEST(Snapped, MovesAPositionToTheNearestPixelEdge) {
  EXPECT_EQ(DevicePixels::snapped(10.4, 1), 10);
  EXPECT_EQ(DevicePixels::snapped(10.4, 2), 10.5);
  EXPECT_EQ(DevicePixels::snapped(10.4, 1.25), 10.4);
  EXPECT_DOUBLE_EQ(DevicePixels::snapped(-1, 1.5), -4 / 3.0); // halves round away from zero
}

TEST(Share, KeepsWholePointsWhereTheGapIsWholePixels) {
  for (const double ratio : {1.0, 1.5, 2.0}) {
    EXPECT_EQ(DevicePixels::share(0, 27, 320, 2, ratio), (DevicePixels::Span{0, 10}));
    EXPECT_EQ(DevicePixels::share(1, 27, 320, 2, ratio), (DevicePixels::Span{12, 10}));
    EXPECT_EQ(DevicePixels::share(6, 27, 320, 2, ratio), (DevicePixels::Span{72, 9}));
    EXPECT_EQ(DevicePixels::share(26, 27, 320, 2, ratio), (DevicePixels::Span{310, 10}));
  }
}

TEST(Share, FillsTheWidthWithEqualGapsOnWholePixels) {
  for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 2.25, 3.0}) {
    const double gap = std::round(2 * ratio) / ratio;
    double right = -gap;
    for (int i = 0; i < 27; ++i) {
      const auto span = DevicePixels::share(i, 27, 320, 2, ratio);
      EXPECT_NEAR(span.left, right + gap, 1e-9) << ratio;
      if (ratio != 1.5) { // where spans have whole points instead
        EXPECT_NEAR(span.left * ratio, std::round(span.left * ratio), 1e-9) << ratio;
      }
      EXPECT_NEAR(span.width, (320 - 26 * gap) / 27, 1) << ratio;
      right = span.left + span.width;
    }
    EXPECT_NEAR(right, 320, 0.5 / ratio);
  }
}

TEST(WholeWidth, RoundsToWholePixelsAndAtLeastOne) {
  EXPECT_EQ(DevicePixels::wholeWidth(1, 1), 1);
  EXPECT_EQ(DevicePixels::wholeWidth(1, 1.25), 0.8);
  EXPECT_DOUBLE_EQ(DevicePixels::wholeWidth(1, 1.5), 2 / 1.5);
  EXPECT_EQ(DevicePixels::wholeWidth(2, 2), 2);
  EXPECT_DOUBLE_EQ(DevicePixels::wholeWidth(0.1, 1.25), 0.8) << "at least one";
}
