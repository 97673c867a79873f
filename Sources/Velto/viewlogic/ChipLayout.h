// Where the value chips of the markers stand on an answer strip. All lengths are in points, from
// the strip's left and top edge.
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

// Places the chips of up to two markers inside the strip: right of their bar, or left of it where
// they would leave the strip. Chips never overlap each other or a bar: of two close bars the left
// one gets its chip on the left and the right one on the right; where that does not fit, both chips
// stack on the side that has room.
[[nodiscard]] Places place(std::optional<Marker> answer, std::optional<Marker> truth,
                           double stripWidth);

} // namespace velto::ChipLayout
