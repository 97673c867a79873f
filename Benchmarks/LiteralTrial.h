// The trials that are measured, for the program and for its literal twin.
#pragma once

#include "Drills.h"
#include "reference/LiteralModel.h"

namespace velto::benchmarks {

inline constexpr double trialSeconds = 3.2;
inline constexpr std::size_t trialFrames = 153600;

// A trial of middling difficulty.
[[nodiscard]] inline Trial trialOf(Drill drill) {
  return Drills::makeTrial(50, Drills::defaultMaterial(drill), 4242, drill);
}

[[nodiscard]] inline literal::Trial literalTrialOf(Drill drill) {
  const Trial t = trialOf(drill);
  return literal::makeTrial(t.difficulty, static_cast<literal::Material>(int{t.material}), t.seed,
                            static_cast<literal::Drill>(int{t.drill}));
}

} // namespace velto::benchmarks
