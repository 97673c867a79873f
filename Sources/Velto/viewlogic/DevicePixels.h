// Snaps lengths and positions to whole device pixels. All lengths are in points; `devicePixelRatio`
// is pixels per point.
#pragma once

namespace velto::DevicePixels {

// `x` moved to the nearest edge between device pixels.
[[nodiscard]] double snapped(double x, double devicePixelRatio);

// `width` rounded to whole device pixels, at least one.
[[nodiscard]] double wholeWidth(double width, double devicePixelRatio);

struct Span {
  double left = 0;
  double width = 0;

  bool operator==(const Span&) const = default;
};

// The span of wholeWidth(width) nearest to `centre` with its edges on whole device pixels. It is as
// wide at every place.
[[nodiscard]] Span centred(double centre, double width, double devicePixelRatio);

// Share `index` of `count` shares of `width`, with the same gap of about `gap` between any two. The
// edges lie on whole device pixels; the shares differ by one pixel at most.
[[nodiscard]] Span share(int index, int count, double width, double gap, double devicePixelRatio);

} // namespace velto::DevicePixels
