#include "ChipLayout.h"

#include <algorithm>
#include <utility>

namespace velto {

namespace {

using ChipLayout::barGap;
using ChipLayout::Marker;
using ChipLayout::Place;
using ChipLayout::Places;
using ChipLayout::stackGap;
using ChipLayout::topGap;

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

Place placeSingle(const Marker& marker, double stripWidth) {
  const bool right = fitsRight(marker, stripWidth) || !fitsLeft(marker);
  return {right ? rightOf(marker) : leftOf(marker), topGap};
}

// Stacks the chips beyond both bars, on the side that has room.
std::pair<Place, Place> placeStacked(const Marker& left, const Marker& right, double stripWidth) {
  constexpr double secondRow = topGap + ChipLayout::chipHeight + stackGap;
  const double widest = std::max(left.chipWidth, right.chipWidth);
  if (rightOf(right) + widest <= stripWidth)
    return {{rightOf(right), topGap}, {rightOf(right), secondRow}};
  return {{leftOf(left), topGap}, {left.x - barGap - right.chipWidth, secondRow}};
}

// `left` is left of `right` or at the same position.
std::pair<Place, Place> placePair(const Marker& left, const Marker& right, double stripWidth) {
  const double between = right.x - left.x;
  const bool rightFits = fitsRight(right, stripWidth);
  // Each chip goes right of its own bar.
  if (rightFits && barGap + left.chipWidth + barGap <= between)
    return {{rightOf(left), topGap}, {rightOf(right), topGap}};
  if (rightFits && fitsLeft(left))
    return {{leftOf(left), topGap}, {rightOf(right), topGap}};
  // The right chip has to go left of its bar; the left chip keeps clear of it.
  if (!rightFits && barGap + right.chipWidth + barGap <= between) {
    if (barGap + left.chipWidth + stackGap + right.chipWidth + barGap <= between)
      return {{rightOf(left), topGap}, {leftOf(right), topGap}};
    if (fitsLeft(left))
      return {{leftOf(left), topGap}, {leftOf(right), topGap}};
  }
  return placeStacked(left, right, stripWidth);
}

} // namespace

Places ChipLayout::place(std::optional<Marker> answer, std::optional<Marker> truth,
                         double stripWidth) {
  if (!answer && !truth)
    return {};
  if (!truth)
    return {placeSingle(*answer, stripWidth), {}};
  if (!answer)
    return {{}, placeSingle(*truth, stripWidth)};
  if (answer->x <= truth->x) {
    const auto [left, right] = placePair(*answer, *truth, stripWidth);
    return {left, right};
  }
  const auto [left, right] = placePair(*truth, *answer, stripWidth);
  return {right, left};
}

} // namespace velto
