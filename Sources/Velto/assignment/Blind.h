// What one gets without listening.
#pragma once

#include "Bands.h"
#include "Drill.h"

#include <array>
#include <span>

namespace velto {

// The best that fixed answers do in trials whose seeds are spread over 64 bits.
struct Blind {
  double hits = 0;  // the largest share of hits, 0 to 1
  double error = 0; // the smallest mean error: octaves, dB, dB, or 0 to 1

  using Weights = std::array<double, Bands::centres.size()>;
  // All bands alike.
  static constexpr Weights even = [] {
    Weights weights{};
    weights.fill(1);
    return weights;
  }();

  // At a difficulty from 0 to 100. `weights` (0 or more, not all 0) say how often each band of a
  // frequency trial is the target. Any thread.
  [[nodiscard]] static Blind at(Drill drill, double difficulty, const Weights& weights = even);
};

} // namespace velto
