#include "StripLayout.h"

#include "DevicePixels.h"

#include <algorithm>
#include <cmath>

namespace velto {

double StripLayout::tickLeft(double x, double width, double stripWidth, double devicePixelRatio) {
  const double left = DevicePixels::snapped(x - width / 2, devicePixelRatio);
  constexpr double slack = 1e-6; // rounding must not move an edge that is on a whole pixel
  // The strip's own edge is on the nearest pixel.
  const double last =
      std::round(stripWidth * devicePixelRatio) - std::ceil(width * devicePixelRatio - slack);
  return std::clamp(left, 0.0, std::max(last / devicePixelRatio, 0.0));
}

double StripLayout::markerWidthAt(double devicePixelRatio) {
  return DevicePixels::wholeWidth(markerWidth, devicePixelRatio);
}

double StripLayout::markerLeft(double x, double devicePixelRatio) {
  // Halves go right, at the strip's left end too.
  const double width = std::round(markerWidthAt(devicePixelRatio) * devicePixelRatio);
  return std::floor(x * devicePixelRatio - width / 2 + 0.5) / devicePixelRatio;
}

} // namespace velto
