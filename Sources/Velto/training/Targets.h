// What the trials of a drill ask for, and how often.
#pragma once

#include "Bands.h"
#include "Drill.h"
#include "Trial.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace velto {

// The trials that have the same right answer.
struct Target {
  Trial trial;       // one of them
  double weight = 0; // above 0: how often they come, in any unit
};

// How often each band is asked for in frequency trials: 0 or more, not all 0, in any unit.
using BandWeights = std::array<double, Bands::centres.size()>;

namespace Targets {

inline constexpr BandWeights evenBands = [] {
  BandWeights weights{};
  weights.fill(1);
  return weights;
}();

// The targets of the trials of `seeds`, which are not empty; ascending. Any thread.
[[nodiscard]] std::vector<Target> of(Drill drill, double difficulty,
                                     std::span<const std::uint64_t> seeds);

// Those of all seeds, exactly: seeds are spread over 64 bits, apart from the weights of the bands;
// ascending. Any thread.
[[nodiscard]] std::vector<Target> spread(Drill drill, double difficulty,
                                         const BandWeights& weights = evenBands);

} // namespace Targets

} // namespace velto
