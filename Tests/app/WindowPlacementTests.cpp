#include "WindowPlacement.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace velto;

namespace {

// Free areas in points: of ordinary screens, 1366x768 at 1.25x, 1024x600, an upright 1080x1920,
// each with and without a panel, and of a screen that is smaller than the window can be.
const QRect roomy(0, 0, 1920, 1080);
const QRect small[] = {{0, 0, 1092, 614},    {0, 26, 1092, 588}, {0, 0, 1024, 600},
                       {64, 0, 960, 600},    {0, 0, 1080, 1920}, {0, 32, 1080, 1888},
                       {1920, 0, 1024, 600}, {0, 0, 800, 400}};

// The content with a title bar and borders around it.
QRect framed(const QRect& content) {
  return content.adjusted(-4, -40, 4, 4);
}

} // namespace

TEST(WindowPlacement, OpensAtItsInitialSizeInTheCentreOfARoomyScreen) {
  EXPECT_EQ(WindowPlacement::opening(roomy), QSize(1180, 386));
  EXPECT_EQ(WindowPlacement::centred({1180, 386}, roomy), QRect(370, 347, 1180, 386));
}

TEST(WindowPlacement, OpensInsideTheFreeAreaWithItsFrame) {
  for (const QRect& area : small) {
    const QSize size = WindowPlacement::opening(area);
    const QRect window = WindowPlacement::centred(size, area);
    EXPECT_EQ(window.size(), size);
    EXPECT_TRUE(area.contains(framed(window)))
        << window.x() << ',' << window.y() << ' ' << window.width() << 'x' << window.height()
        << " on " << area.width() << 'x' << area.height();
    EXPECT_GT(size.width(), std::min(1180, area.width() - 8) - 4) << "wastes width";
  }
}

TEST(WindowPlacement, KeepsTheContentWholeWhereItFits) {
  for (const QRect& area : small) {
    const QSize least = WindowPlacement::smallest({1001, 387}, area);
    if (area.width() >= 1024) {
      EXPECT_GE(least.width(), 1001);
      EXPECT_LT(least.width(), 1005);
    } else {
      EXPECT_EQ(least.width(), area.width() - 8);
    }
    if (area.height() >= 500) {
      EXPECT_GE(least.height(), 387);
    } else {
      EXPECT_LE(least.height(), area.height() - 40);
    }
  }
}

TEST(WindowPlacement, StepsFromTheInitialSizeByFourPoints) {
  for (double width = 1001; width < 1200; width += 0.5) {
    const int least = WindowPlacement::smallest({width, 370}, roomy).width();
    EXPECT_GE(least, width);
    EXPECT_LT(least, width + 4);
    EXPECT_EQ((1180 - least) % 4, 0);
  }
  for (int free = 1000; free < 1300; ++free)
    EXPECT_EQ((1180 - WindowPlacement::opening({0, 0, free, 900}).width()) % 4, 0);
}

TEST(WindowPlacement, NeverHidesTheTopLeftCornerOfAWindowThatIsTooLarge) {
  const QRect window = WindowPlacement::centred({1180, 700}, {100, 50, 800, 400});
  EXPECT_EQ(window.topLeft(), QPoint(104, 98));
}

TEST(WindowPlacement, ResizesInStepsOfWholePixels) {
  EXPECT_EQ(WindowPlacement::increment(1), 1);
  EXPECT_EQ(WindowPlacement::increment(1.25), 4);
  EXPECT_EQ(WindowPlacement::increment(1.5), 2);
  EXPECT_EQ(WindowPlacement::increment(1.75), 4);
  EXPECT_EQ(WindowPlacement::increment(2), 1);
  EXPECT_EQ(WindowPlacement::increment(1.1), 1) << "no step of at most 4 points is whole";
}
