// The places of the markers' value chips on an answer strip. All lengths are in points, from
// the strip's left and top edge; `devicePixelRatio` is pixels per point.
#pragma once

#include <optional>

namespace velto::ChipLayout {

inline constexpr double chipHeight = 20;
inline constexpr double topGap = 6;    // above a chip of the upper row
inline constexpr double barGap = 6;    // between a bar's centre and its chip
inline constexpr double otherGap = 10; // at least, between a chip and the other bar's centre
inline constexpr double closeGap = 4;  // the same for a chip that touches its own bar
inline constexpr double stackGap = 4;  // between two chips, side by side or stacked

struct Marker {
  double x = 0; // the value's position
  double chipWidth = 0;
};

// The top left corner of a chip.
struct Place {
  double x = 0;
  double y = 0;
  bool crosses = false; // the other marker's bar runs behind the chip

  bool operator==(const Place&) const = default;
};

// The place of a missing marker is unspecified.
struct Places {
  Place answer;
  Place truth;
};

// Places the chips of up to two markers inside the strip, clear of each other and each at its own
// bar: `barGap` beside it and nearer to it than to the other bar. A chip that has no room for that
// touches its own bar and, where it must, crosses the other one; it then has a row of its own.
// Markers at the same position have a chip on each side, or both on the side that has room. The
// strip must be wider than twice the two chips together.
[[nodiscard]] Places place(std::optional<Marker> answer, std::optional<Marker> truth,
                           double stripWidth, double devicePixelRatio);

} // namespace velto::ChipLayout
