// Boxes with continuous corners as CSS shapes, which fit an element of any size.
#pragma once

#include <string>

namespace velto::PageOutline {

// The shape of a box with a corner of `radius` CSS pixels: "polygon(0px 2.84px, ...)". The element
// is at least as large as two corners.
[[nodiscard]] std::string fill(double radius);

// The shape of its frame, `width` CSS pixels wide and inside its edges.
[[nodiscard]] std::string frame(double radius, double width);

} // namespace velto::PageOutline
