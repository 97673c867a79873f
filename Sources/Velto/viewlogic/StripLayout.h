// Dimensions of the answer strips, and positions of ticks and markers on them. All lengths are in
// points; horizontal positions count from the strip's left edge.
#pragma once

namespace velto::StripLayout {

inline constexpr double stripHeight = 76;
inline constexpr double areaHeight = 88; // a strip and the labels under it
inline constexpr double tickWidth = 1;
inline constexpr double markerWidth = 2; // of a marker's bar

// The left edge of a tick `width` wide for the value at `x`: centred on it, kept inside the strip,
// and snapped to whole device pixels.
[[nodiscard]] double tickLeft(double x, double width, double stripWidth, double devicePixelRatio);

// The left edge of the bar of a marker for the value at `x`: centred on it, on a whole device
// pixel. At the ends of the strip half of the bar lies outside.
[[nodiscard]] double markerLeft(double x, double devicePixelRatio);

} // namespace velto::StripLayout
