// What a practice record says about a listener, and what it does not prove.
#pragma once

#include "Drill.h"
#include "Intervals.h"
#include "Record.h"
#include "ThresholdFit.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velto {

// Where the trials of a record had their seeds from. The record does not tell.
enum class SeedSource {
  clock, // velto
  spread // velto --fair
};

// The size of the errors in `level` and `dynamics`, dB.
struct ErrorSize {
  double mean = 0;
  std::optional<Interval> interval; // nullopt for fewer than Intervals::fewestForMean answers
  double blindMean = 0; // of the fixed answers with the smallest mean error at each difficulty

  // True if the errors are smaller than those of somebody who does not listen.
  [[nodiscard]] bool showsHearing() const { return interval && interval->upper < blindMean; }
};

// The newest answers of a drill, and what can be said about them.
struct NewestAnswers {
  std::int64_t answers = 0; // at least 1
  std::int64_t hits = 0;
  Interval hitShare;       // 0 to 1
  double blindHitRate = 0; // of the best fixed answers at the same difficulties
  // frequency, polarity. In level and dynamics hits become easier as difficulty rises, because the
  // targets shrink and the tolerance does not: there is no threshold.
  std::optional<ThresholdFit> threshold;
  std::optional<ErrorSize> error; // level, dynamics

  // True if hits are more frequent than without listening.
  [[nodiscard]] bool hitsShowHearing() const { return hitShare.lower > blindHitRate; }
};

struct DrillAnalysis {
  static constexpr std::size_t defaultNewest = 400;

  Drill drill = Drill::frequency;
  std::int64_t answers = 0; // in rows and, for frequency, in the roll-up
  std::int64_t hits = 0;
  double difficulty = 0;               // of the next trial
  std::optional<NewestAnswers> newest; // nullopt without rows

  // Over the newest `newest` (at least 1) rows of the drill; the rows are oldest first. Takes up
  // to a second.
  [[nodiscard]] static DrillAnalysis of(Drill drill, const Stored& record, SeedSource seeds,
                                        std::size_t newest = defaultNewest);
};

// A band of the frequency drill.
struct BandAnalysis {
  std::int64_t index = 0;   // in Bands::centres
  std::int64_t answers = 0; // in rows and roll-up
  std::int64_t hits = 0;
  Interval hitShare;
  double meanErrorOct = 0; // octaves; 0 without answers
  // Of the mean error, from the rows alone: the roll-up has no single errors. nullopt for fewer
  // than Intervals::fewestForMean rows.
  std::optional<Interval> meanError;

  // All bands, in order.
  [[nodiscard]] static std::vector<BandAnalysis> all(const Stored& record);
};

} // namespace velto
