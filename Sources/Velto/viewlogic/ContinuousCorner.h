// Rounded corners without a jump of the curvature: it rises from zero and falls back to zero along
// each corner. A corner is a quarter of the superellipse |x|^3 + |y|^3 = 1 and crosses the diagonal
// where the circular arc of its radius does.
#pragma once

#include <array>
#include <cstddef>

namespace velto::ContinuousCorner {

// The distances of a point from the corner's tip, along the edge that leads to it and along the
// edge that follows.
struct Point {
  double in = 0;
  double out = 0;
};

inline constexpr std::size_t pointCount = 25;

// The length of each edge that a corner of radius 1 takes up.
[[nodiscard]] double reach();

// A corner from its one end to the other, for a reach of 1.
[[nodiscard]] const std::array<Point, pointCount>& points();

} // namespace velto::ContinuousCorner
