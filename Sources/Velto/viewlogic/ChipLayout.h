// Layout of the markers' value chips on an answer strip. All lengths are in points, from the
// strip's left and top edge.
#pragma once

#include <optional>

namespace velto::ChipLayout {

inline constexpr double chipHeight = 20;
inline constexpr double topGap = 6;   // above a chip of the upper row
inline constexpr double barGap = 6;   // between a bar's centre and its chip
inline constexpr double stackGap = 4; // between two chips, side by side or stacked

struct Marker {
  double x = 0; // the bar's centre
  double chipWidth = 0;
};

// The top left corner of a chip.
struct Place {
  double x = 0;
  double y = 0;

  bool operator==(const Place&) const = default;
};

// The place of a missing marker is unspecified.
struct Places {
  Place answer;
  Place truth;
};

// Places the chips of up to two markers: right of their bars, or left if they would leave the strip
// on the right. Chips never overlap each other or a bar: if two bars are close, the left one gets
// its chip on its left and the right one on its right; if that does not fit either, both chips are
// stacked on the side that has room.
[[nodiscard]] Places place(std::optional<Marker> answer, std::optional<Marker> truth,
                           double stripWidth);

} // namespace velto::ChipLayout
