#include "ChipLayout.h"

#include "StripLayout.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velto {

namespace {

using ChipLayout::barGap;
using ChipLayout::closeGap;
using ChipLayout::Marker;
using ChipLayout::otherGap;
using ChipLayout::Place;
using ChipLayout::Places;
using ChipLayout::stackGap;
using ChipLayout::topGap;

constexpr double secondRow = topGap + ChipLayout::chipHeight + stackGap;

double rightOf(const Marker& marker) {
  return marker.x + barGap;
}
double leftOf(const Marker& marker) {
  return marker.x - barGap - marker.chipWidth;
}

bool fitsRight(const Marker& marker, double stripWidth) {
  return rightOf(marker) + marker.chipWidth <= stripWidth;
}
bool fitsLeft(const Marker& marker) {
  return leftOf(marker) >= 0;
}

// The places of a chip that touches its bar.
double touchingRight(const Marker& marker, double ratio) {
  return StripLayout::markerLeft(marker.x, ratio) + StripLayout::markerWidthAt(ratio);
}
double touchingLeft(const Marker& marker, double ratio) {
  return StripLayout::markerLeft(marker.x, ratio) - marker.chipWidth;
}

Place placeSingle(const Marker& marker, double stripWidth) {
  const bool right = fitsRight(marker, stripWidth) || !fitsLeft(marker);
  return {right ? rightOf(marker) : leftOf(marker), topGap};
}

// Both markers have the same position.
std::pair<Place, Place> placeEqual(const Marker& left, const Marker& right, double stripWidth) {
  if (fitsLeft(left) && fitsRight(right, stripWidth))
    return {{leftOf(left), topGap}, {rightOf(right), topGap}};
  if (fitsRight(left, stripWidth) && fitsRight(right, stripWidth))
    return {{rightOf(left), topGap}, {rightOf(right), secondRow}};
  return {{leftOf(left), topGap}, {leftOf(right), secondRow}};
}

// `left` is left of `right`.
std::pair<Place, Place> placePair(const Marker& left, const Marker& right, double stripWidth,
                                  double ratio) {
  const double between = right.x - left.x;
  const auto fitsBetween = [between](const Marker& marker) {
    return barGap + marker.chipWidth + otherGap <= between;
  };
  if (fitsRight(right, stripWidth)) {
    if (fitsBetween(left))
      return {{rightOf(left), topGap}, {rightOf(right), topGap}};
    if (fitsLeft(left))
      return {{leftOf(left), topGap}, {rightOf(right), topGap}};
    const double x = touchingRight(left, ratio);
    if (x + left.chipWidth + closeGap <= right.x)
      return {{x, topGap}, {rightOf(right), topGap}};
    return {{x, topGap, true}, {rightOf(right), secondRow}};
  }
  // The right chip has to go left of its bar.
  if (!fitsBetween(right)) {
    const double x = touchingLeft(right, ratio);
    if (left.x + closeGap <= x)
      return {{leftOf(left), topGap}, {x, topGap}};
    return {{leftOf(left), topGap}, {x, secondRow, true}};
  }
  if (barGap + left.chipWidth + stackGap + right.chipWidth + barGap > between && fitsLeft(left))
    return {{leftOf(left), topGap}, {leftOf(right), topGap}};
  return {{rightOf(left), topGap}, {leftOf(right), topGap}};
}

} // namespace

Places ChipLayout::place(std::optional<Marker> answer, std::optional<Marker> truth,
                         double stripWidth, double devicePixelRatio) {
  if (!answer && !truth)
    return {};
  if (!truth)
    return {placeSingle(*answer, stripWidth), {}};
  if (!answer)
    return {{}, placeSingle(*truth, stripWidth)};
  constexpr double rounding = 1e-6; // tolerance for positions of equal values
  if (std::abs(answer->x - truth->x) < rounding) {
    const auto [left, right] = placeEqual(*answer, *truth, stripWidth);
    return {left, right};
  }
  if (answer->x < truth->x) {
    const auto [left, right] = placePair(*answer, *truth, stripWidth, devicePixelRatio);
    return {left, right};
  }
  const auto [left, right] = placePair(*truth, *answer, stripWidth, devicePixelRatio);
  return {right, left};
}

} // namespace velto
