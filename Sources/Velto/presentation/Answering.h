// The geometry of the answer scales: where values lie, what a click or a key means, ticks, and
// where the markers' chips go. Pure functions; lengths are in points from the strip's left or top
// edge.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velto {

// What the keys that move an answer or a choice ask for. On a scale left and down lead to lower
// values, among choices left and up lead to the previous one.
enum class Move { left, right, up, down, pageUp, pageDown, toStart, toEnd };

// One tick of a scale, standing on the strip's bottom edge.
struct ScaleTick {
  double value = 0;  // Hz or dB
  double height = 0; // points
  bool major = false;
  std::string label; // empty: none

  bool operator==(const ScaleTick&) const = default;
};

namespace Answering {

inline constexpr double stripHeight = 76; // of every strip
inline constexpr double areaHeight = 88;  // of a strip and what stands under it

} // namespace Answering

// A logarithmic axis from `lo` to `hi` Hz whose answers are the third-octave band centres.
struct FrequencyScale {
  double lo = 40;
  double hi = 16000;

  // The place of `frequency` on a strip `width` points wide.
  [[nodiscard]] double position(double frequency, double width) const;
  // What a pointer at `x` answers: the band centre nearest to it on the axis (the lower of two as
  // near). Positions beyond the ends count as the ends.
  [[nodiscard]] double valueAt(double x, double width) const;
  // The band centre on the axis that is nearest to `frequency` in octaves.
  [[nodiscard]] double nearest(double frequency) const;
  // The band centre that a key leads to: left, right, up and down to the next one, Page Up and Page
  // Down an octave on, start and end to the ends. Held to the axis; a frequency that is no centre
  // counts as the nearest one.
  [[nodiscard]] double moved(double frequency, Move move) const;
  // "3.15k Hz"
  [[nodiscard]] static std::string text(double frequency);
  // "3.15 kHz", as it is read out
  [[nodiscard]] static std::string spoken(double frequency);
  // A tick for each band centre; decade marks are major and labelled.
  [[nodiscard]] static std::vector<ScaleTick> ticks();
  // How far left of its position a label starts.
  static constexpr double labelOffset = 8;
};

// A linear axis from `lower` to `upper` dB whose answers are multiples of `step`.
struct DecibelScale {
  double lower = 0;
  double upper = 7;
  double step = 0.05;

  // The place of `decibels` on a strip `width` points wide.
  [[nodiscard]] double position(double decibels, double width) const;
  // What a pointer at `x` answers: the multiple of `step` nearest to it, halves away from zero.
  [[nodiscard]] double valueAt(double x, double width) const;
  // The multiple of `step` nearest to `decibels`, held to the axis.
  [[nodiscard]] double nearest(double decibels) const;
  // The value that a key leads to: left, right, up and down by a step, Page Up and Page Down by
  // what lies between two labelled ticks, start and end to the ends. Held to the axis; a value
  // between two steps counts as the nearest one.
  [[nodiscard]] double moved(double decibels, Move move) const;
  // "2.65 dB"
  [[nodiscard]] static std::string text(double decibels);
  // A tick every 0.5 dB, or every 1 dB where the scale reaches beyond 10 dB; whole numbers (even
  // ones where it reaches beyond 10 dB) are major and labelled.
  [[nodiscard]] std::vector<ScaleTick> ticks() const;
  static constexpr double labelOffset = 4;
};

namespace Answering {

// The choice that a key leads to among `count` of them, from 0: left and up to the previous one,
// right and down to the next one, round at the ends, start and end to the first and the last. From
// no choice (-1) the next one is the first and the previous one the last. The paging keys stay.
[[nodiscard]] int movedChoice(int chosen, int count, Move move);

// `x` moved to the nearest edge between device pixels, `devicePixelRatio` pixels a point.
[[nodiscard]] double snapped(double x, double devicePixelRatio);

// The left edge of a tick or marker of `width` points that is centred on `x`: whole device pixels,
// inside a strip of `stripWidth`.
[[nodiscard]] double tickLeft(double x, double width, double stripWidth, double devicePixelRatio);

// A marker to place: its bar's position and the width of its chip.
struct MarkerSize {
  double x = 0;
  double chipWidth = 0;
};

// The top left corner of a chip.
struct ChipPlace {
  double x = 0;
  double y = 0;

  bool operator==(const ChipPlace&) const = default;
};

// Where the two chips go; that of a missing marker is of no meaning.
struct ChipPlaces {
  ChipPlace answer;
  ChipPlace truth;
};

inline constexpr double chipHeight = 20;
inline constexpr double chipTop = 6;      // of a chip near the strip's top
inline constexpr double chipGap = 6;      // between a bar's centre and its chip
inline constexpr double chipStackGap = 4; // between two chips, side by side or stacked

// Where the chips of one or two markers go on a strip: inside it, right of their bar, or left of it
// where they would leave the strip. Two chips never overlap and no bar crosses a chip: where the
// bars are close the left marker's chip goes left and the right one's right, and where there is no
// room for that, the chips stack on the side that has room.
[[nodiscard]] ChipPlaces placeChips(std::optional<MarkerSize> answer,
                                    std::optional<MarkerSize> truth, double stripWidth);

} // namespace Answering

} // namespace velto
