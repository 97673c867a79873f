#include "DevicePixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace velto;

TEST(Snapped, MovesAPositionToTheNearestPixelEdge) {
  EXPECT_EQ(DevicePixels::snapped(10.4, 1), 10);
  EXPECT_EQ(DevicePixels::snapped(10.4, 2), 10.5);
  EXPECT_EQ(DevicePixels::snapped(10.4, 1.25), 10.4);
  EXPECT_DOUBLE_EQ(DevicePixels::snapped(-1, 1.5), -4 / 3.0); // halves round away from zero
}

TEST(Share, HasWholePixelsAtEachScale) {
  EXPECT_EQ(DevicePixels::share(0, 27, 320, 2, 1), (DevicePixels::Span{0, 10}));
  EXPECT_EQ(DevicePixels::share(1, 27, 320, 2, 1), (DevicePixels::Span{12, 10}));
  EXPECT_EQ(DevicePixels::share(6, 27, 320, 2, 1), (DevicePixels::Span{72, 9}));
  EXPECT_EQ(DevicePixels::share(26, 27, 320, 2, 1), (DevicePixels::Span{310, 10}));
  EXPECT_EQ(DevicePixels::share(6, 27, 320, 2, 2), (DevicePixels::Span{71.5, 10}));
  EXPECT_EQ(DevicePixels::share(1, 3, 739, 10, 2), (DevicePixels::Span{249.5, 240}));
}

TEST(Share, DiffersFromOthersByAPixelAtMost) {
  for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0})
    for (const double width : {320.0, 560.0, 739.0, 741.0})
      for (const int count : {3, 27}) {
        double least = width, most = 0;
        for (int i = 0; i < count; ++i) {
          const double pixels = DevicePixels::share(i, count, width, 2, ratio).width * ratio;
          least = std::min(least, pixels);
          most = std::max(most, pixels);
        }
        EXPECT_LE(most - least, 1 + 1e-9) << count << " of " << width << " at " << ratio;
      }
}

TEST(Share, FillsTheWidthWithEqualGapsOnWholePixels) {
  for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 2.25, 3.0}) {
    const double gap = std::round(2 * ratio) / ratio;
    double right = -gap;
    for (int i = 0; i < 27; ++i) {
      const auto span = DevicePixels::share(i, 27, 320, 2, ratio);
      EXPECT_NEAR(span.left, right + gap, 1e-9) << ratio;
      EXPECT_NEAR(span.left * ratio, std::round(span.left * ratio), 1e-9) << ratio;
      EXPECT_NEAR(span.width, (320 - 26 * gap) / 27, 1) << ratio;
      right = span.left + span.width;
    }
    EXPECT_NEAR(right, 320, 0.5 / ratio);
  }
}

TEST(Centred, HasOneWidthAtEveryPlace) {
  for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0})
    for (int i = 0; i < 100; ++i) {
      const double centre = 40 + 0.07 * i;
      const auto span = DevicePixels::centred(centre, 6, ratio);
      EXPECT_DOUBLE_EQ(span.width * ratio, std::round(6 * ratio));
      EXPECT_NEAR(span.left * ratio, std::round(span.left * ratio), 1e-9);
      EXPECT_LE(std::abs(span.left + span.width / 2 - centre), 0.5 / ratio + 1e-9);
    }
}

TEST(WholeWidth, RoundsToWholePixelsAndAtLeastOne) {
  EXPECT_EQ(DevicePixels::wholeWidth(1, 1), 1);
  EXPECT_EQ(DevicePixels::wholeWidth(1, 1.25), 0.8);
  EXPECT_DOUBLE_EQ(DevicePixels::wholeWidth(1, 1.5), 2 / 1.5);
  EXPECT_EQ(DevicePixels::wholeWidth(2, 2), 2);
  EXPECT_DOUBLE_EQ(DevicePixels::wholeWidth(0.1, 1.25), 0.8) << "at least one";
}
