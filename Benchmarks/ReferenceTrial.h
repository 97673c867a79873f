// The measured trials, for the program and for the reference model.
#pragma once

#include "Drill.h"
#include "Trial.h"
#include "reference/ReferenceModel.h"

namespace velto::benchmarks {

inline constexpr double trialSeconds = 3.2;
inline constexpr std::size_t trialFrames = 153600;

// A trial of medium difficulty.
[[nodiscard]] inline Trial trialOf(Drill drill) {
  return Drills::makeTrial(50, Drills::defaultMaterial(drill), 4242, drill);
}

[[nodiscard]] inline reference::Trial referenceTrialOf(Drill drill) {
  const Trial t = trialOf(drill);
  return reference::makeTrial(t.difficulty, static_cast<reference::Material>(int{t.material}),
                              t.seed, static_cast<reference::Drill>(int{t.drill}));
}

} // namespace velto::benchmarks
