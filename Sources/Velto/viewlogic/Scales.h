// The axes of the answer scales: positions of values, answers selected by clicks and keys, ticks
// and texts. Positions are in points from the strip's left edge.
#pragma once

#include "Bands.h"
#include "KeyMoves.h"

#include <string>
#include <vector>

namespace velto {

// One tick of a scale, standing on the strip's bottom edge.
struct ScaleTick {
  double value = 0;  // Hz or dB
  double height = 0; // points
  bool major = false;
  std::string label; // empty: none

  bool operator==(const ScaleTick&) const = default;
};

// A logarithmic axis in Hz whose answers are the third-octave band centres.
struct FrequencyScale {
  double lowest = Bands::centres.front();
  double highest = Bands::centres.back();

  // The position of `frequency` on a strip `width` points wide.
  [[nodiscard]] double position(double frequency, double width) const;
  // The answer for a pointer at `x`: the band centre nearest on the axis, the lower one on a tie.
  // Positions beyond the ends are clamped.
  [[nodiscard]] double valueAt(double x, double width) const;
  // The band centre on the axis that is nearest to `frequency` in octaves.
  [[nodiscard]] double nearest(double frequency) const;
  // The band centre that a key leads to, clamped to the axis: arrow keys move by a band, Page Up
  // and Page Down by an octave. A frequency between centres counts as the nearest one.
  [[nodiscard]] double moved(double frequency, Move move) const;
  // A tick for each band centre; decades are major and labelled.
  [[nodiscard]] std::vector<ScaleTick> ticks() const;

  // "3.15k Hz"
  [[nodiscard]] static std::string text(double frequency);
  // "3.15 kHz", for screen readers
  [[nodiscard]] static std::string spoken(double frequency);

  // Distance from a label's left edge to its tick's position, in points.
  static constexpr double labelOffset = 8;
  static constexpr double step = 0; // the steps vary
};

// A linear axis in dB whose answers are multiples of `step`.
struct DecibelScale {
  double lowest = 0;
  double highest = 0;
  double step = 0;

  // The position of `decibels` on a strip `width` points wide.
  [[nodiscard]] double position(double decibels, double width) const;
  // The answer for a pointer at `x`: the nearest multiple of `step`, halves away from zero.
  // Positions beyond the ends are clamped.
  [[nodiscard]] double valueAt(double x, double width) const;
  // The multiple of `step` on the axis that is nearest to `decibels`.
  [[nodiscard]] double nearest(double decibels) const;
  // The value that a key leads to, clamped to the axis: arrow keys move by a step, Page Up and Page
  // Down by the distance between two labels. A value between steps counts as the nearest one.
  [[nodiscard]] double moved(double decibels, Move move) const;
  // A tick every 0.5 dB with whole numbers major and labelled; on a coarse scale every 1 dB, even
  // numbers major and labelled.
  [[nodiscard]] std::vector<ScaleTick> ticks() const;
  [[nodiscard]] bool isCoarse() const { return highest > 10; }

  // "2.65 dB"
  [[nodiscard]] static std::string text(double decibels);
  [[nodiscard]] static std::string spoken(double decibels) { return text(decibels); }

  static constexpr double labelOffset = 4;
};

// The scales of the drills.
inline constexpr FrequencyScale frequencyScale;
inline constexpr DecibelScale levelScale{.lowest = 0, .highest = 7, .step = 0.05};
inline constexpr DecibelScale dynamicsScale{.lowest = 0, .highest = 14, .step = 0.5};

} // namespace velto
