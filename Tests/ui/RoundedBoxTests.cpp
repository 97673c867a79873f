#include "RoundedBox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace velto;

namespace {

// The curvature of the circle through three points.
double curvature(QPointF a, QPointF b, QPointF c) {
  const QPointF u = b - a, v = c - b, w = c - a;
  const double area = std::abs(u.x() * v.y() - u.y() * v.x());
  return 2 * area /
         (std::hypot(u.x(), u.y()) * std::hypot(v.x(), v.y()) * std::hypot(w.x(), w.y()));
}

// The curvature along an outline at equal steps of its length, over `count` samples.
std::vector<double> curvatures(const QPainterPath& path, int count) {
  std::vector<QPointF> points;
  for (int i = 0; i < count; ++i)
    points.push_back(path.pointAtPercent(static_cast<double>(i) / count));
  std::vector<double> result;
  const auto n = points.size();
  for (std::size_t i = 0; i < n; ++i)
    result.push_back(curvature(points[(i + n - 1) % n], points[i], points[(i + 1) % n]));
  return result;
}

double largestStep(const std::vector<double>& values) {
  double largest = 0;
  for (std::size_t i = 0; i < values.size(); ++i)
    largest =
        std::max(largest, std::abs(values[i] - values[(i + values.size() - 1) % values.size()]));
  return largest;
}

} // namespace

TEST(Outline, ContinuousCornersHaveContinuousCurvature) {
  // Corners of radius 1000. At steps of 30, an arc's curvature jumps to 1/1000 within one step. A
  // continuous corner's has no such jump even at steps of 150.
  const QRectF rect(0, 0, 6000, 4000);
  const auto arc = curvatures(roundedOutline(rect, 1000, false), 600);
  const auto smooth = curvatures(roundedOutline(rect, 1000, true), 120);
  EXPECT_GT(largestStep(arc), 0.4 / 1000) << "the samples show the jump";
  EXPECT_LT(largestStep(smooth), 0.4 / 1000);
  EXPECT_GT(*std::max_element(smooth.begin(), smooth.end()), 0.8 / 1000);
}

TEST(Outline, BothKindsOfCornersCutTheSameDiagonal) {
  const QRectF rect(0, 0, 600, 400);
  for (const bool continuous : {false, true}) {
    const QPainterPath path = roundedOutline(rect, 100, continuous);
    const double cut = 100 * (1 - std::sqrt(0.5));
    EXPECT_FALSE(path.contains(QPointF(cut - 1, cut - 1)));
    EXPECT_TRUE(path.contains(QPointF(cut + 1, cut + 1)));
    EXPECT_FALSE(path.contains(QPointF(600 - cut + 1, 400 - cut + 1)));
    EXPECT_TRUE(path.contains(QPointF(600 - cut - 1, 400 - cut - 1)));
    EXPECT_EQ(path.boundingRect(), rect);
  }
}
