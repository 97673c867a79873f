#include "DevicePixels.h"

#include <gtest/gtest.h>

using namespace velto;

TEST(Snapped, MovesAPositionToTheNearestPixelEdge) {
  EXPECT_EQ(DevicePixels::snapped(10.4, 1), 10);
  EXPECT_EQ(DevicePixels::snapped(10.4, 2), 10.5);
  EXPECT_EQ(DevicePixels::snapped(10.4, 1.25), 10.4);
  EXPECT_DOUBLE_EQ(DevicePixels::snapped(-1, 1.5), -4 / 3.0); // halves go away from zero
}

TEST(WholeWidth, RoundsToWholePixelsAndAtLeastOne) {
  EXPECT_EQ(DevicePixels::wholeWidth(1, 1), 1);
  EXPECT_EQ(DevicePixels::wholeWidth(1, 1.25), 0.8);
  EXPECT_DOUBLE_EQ(DevicePixels::wholeWidth(1, 1.5), 2 / 1.5);
  EXPECT_EQ(DevicePixels::wholeWidth(2, 2), 2);
  EXPECT_DOUBLE_EQ(DevicePixels::wholeWidth(0.1, 1.25), 0.8) << "at least one";
}
