#include "StripLayout.h"

#include "DevicePixels.h"

#include <algorithm>
#include <cmath>

namespace velto {

double StripLayout::tickLeft(double x, double width, double stripWidth, double devicePixelRatio) {
  const double left = DevicePixels::snapped(x - width / 2, devicePixelRatio);
  constexpr double slack = 1e-6; // rounding must not move an edge that is on a whole pixel
  const double last = std::floor((stripWidth - width) * devicePixelRatio + slack);
  return std::clamp(left, 0.0, std::max(last / devicePixelRatio, 0.0));
}

double StripLayout::markerLeft(double x, double devicePixelRatio) {
  return DevicePixels::snapped(x - markerWidth / 2, devicePixelRatio);
}

} // namespace velto
