#include "ContinuousCorner.h"

#include <cmath>
#include <numbers>

namespace velto {

namespace {

constexpr double exponent = 3;

std::array<ContinuousCorner::Point, ContinuousCorner::pointCount> makePoints() {
  std::array<ContinuousCorner::Point, ContinuousCorner::pointCount> points;
  constexpr double last = ContinuousCorner::pointCount - 1;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double angle = (std::numbers::pi / 2) * static_cast<double>(i) / last;
    // This parametrisation spreads the points evenly enough.
    points[i] = {1 - std::pow(std::sin(angle), 2 / exponent),
                 1 - std::pow(std::cos(angle), 2 / exponent)};
  }
  return points;
}

} // namespace

double ContinuousCorner::reach() {
  return (1 - std::sqrt(0.5)) / (1 - std::pow(2.0, -1 / exponent));
}

const std::array<ContinuousCorner::Point, ContinuousCorner::pointCount>&
ContinuousCorner::points() {
  static const auto made = makePoints();
  return made;
}

} // namespace velto
