#include "ContinuousCorner.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velto;

TEST(ContinuousCorner, LeadsFromOneEdgeToTheOther) {
  const auto& points = ContinuousCorner::points();
  EXPECT_EQ(points.front().in, 1);
  EXPECT_EQ(points.front().out, 0);
  EXPECT_NEAR(points.back().in, 0, 1e-15);
  EXPECT_NEAR(points.back().out, 1, 1e-10);
  for (std::size_t i = 1; i < points.size(); ++i) {
    EXPECT_LT(points[i].in, points[i - 1].in);
    EXPECT_GT(points[i].out, points[i - 1].out);
  }
}

TEST(ContinuousCorner, IsAQuarterOfASuperellipse) {
  for (const auto& point : ContinuousCorner::points())
    EXPECT_NEAR(std::pow(1 - point.in, 3) + std::pow(1 - point.out, 3), 1, 1e-12);
}

TEST(ContinuousCorner, CrossesTheDiagonalWhereTheArcDoes) {
  const auto& middle = ContinuousCorner::points()[ContinuousCorner::pointCount / 2];
  EXPECT_NEAR(middle.in, middle.out, 1e-15);
  EXPECT_NEAR(ContinuousCorner::reach() * middle.in, 1 - std::sqrt(0.5), 1e-15);
}
