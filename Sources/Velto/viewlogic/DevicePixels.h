// Snaps lengths and positions to whole device pixels. All lengths are in points; `devicePixelRatio`
// is pixels per point.
#pragma once

namespace velto::DevicePixels {

// `x` moved to the nearest edge between device pixels.
[[nodiscard]] double snapped(double x, double devicePixelRatio);

// `width` rounded to whole device pixels, at least one.
[[nodiscard]] double wholeWidth(double width, double devicePixelRatio);

} // namespace velto::DevicePixels
