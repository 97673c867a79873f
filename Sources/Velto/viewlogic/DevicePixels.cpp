#include "DevicePixels.h"

#include <algorithm>
#include <cmath>

namespace velto {

double DevicePixels::snapped(double x, double devicePixelRatio) {
  return std::round(x * devicePixelRatio) / devicePixelRatio;
}

double DevicePixels::wholeWidth(double width, double devicePixelRatio) {
  return std::max(std::round(width * devicePixelRatio), 1.0) / devicePixelRatio;
}

} // namespace velto
