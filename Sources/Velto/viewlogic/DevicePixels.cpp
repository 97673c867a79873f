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

DevicePixels::Span DevicePixels::centred(double centre, double width, double devicePixelRatio) {
  const double whole = wholeWidth(width, devicePixelRatio);
  return {snapped(centre - whole / 2, devicePixelRatio), whole};
}

DevicePixels::Span DevicePixels::share(int index, int count, double width, double gap,
                                       double devicePixelRatio) {
  const double wholeGap = std::round(gap * devicePixelRatio);
  const auto leftOf = [&](int i) {
    return std::round(i * (width * devicePixelRatio + wholeGap) / count);
  };
  const double left = leftOf(index);
  return {left / devicePixelRatio, (leftOf(index + 1) - wholeGap - left) / devicePixelRatio};
}

} // namespace velto
