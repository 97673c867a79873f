#include "PageOutline.h"

#include "ContinuousCorner.h"
#include "Numbers.h"

namespace velto {

namespace {

// "3px" or, from the far edge, "calc(100% - 3px)".
std::string length(double value, bool isFromEnd) {
  const std::string text = Numbers::general(value, 5) + "px";
  return isFromEnd ? "calc(100% - " + text + ')' : text;
}

// The points of the outline `inset` pixels inside the element, clockwise from its left edge; the
// first one again at the end.
std::string outline(double inset, double radius) {
  const double reach = radius * ContinuousCorner::reach();
  std::string text, first;
  for (int corner = 0; corner < 4; ++corner) {
    const bool isRight = corner == 1 || corner == 2, isLower = corner >= 2;
    const bool startsUpright = corner % 2 == 0; // its first edge
    for (const auto& point : ContinuousCorner::points()) {
      const double in = inset + reach * point.in, out = inset + reach * point.out;
      const std::string each = length(startsUpright ? out : in, isRight) + ' ' +
                               length(startsUpright ? in : out, isLower);
      if (first.empty())
        first = each;
      text += each + ", ";
    }
  }
  return text + first;
}

} // namespace

std::string PageOutline::fill(double radius) {
  return "polygon(" + outline(0, radius) + ')';
}

std::string PageOutline::frame(double radius, double width) {
  return "polygon(evenodd, " + outline(0, radius) + ", " + outline(width, radius - width) + ')';
}

} // namespace velto
