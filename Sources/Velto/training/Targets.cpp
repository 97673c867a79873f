#include "Targets.h"

#include "Grading.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>

namespace velto {

namespace {

// The targets that steps of 1 / `perUnit` leave of a uniform range: step k stands for the part of
// the range within half a step of it.
std::vector<Target> steps(double lo, double hi, double perUnit, Drill drill, double Trial::*field) {
  std::vector<Target> targets;
  const double first = lo * perUnit, last = hi * perUnit;
  for (double k = std::round(first); k <= std::round(last); ++k) {
    const double part = std::min(k + 0.5, last) - std::max(k - 0.5, first);
    if (part <= 0)
      continue;
    Target& target = targets.emplace_back();
    target.trial.drill = drill;
    target.trial.*field = k / perUnit;
    target.weight = part / (last - first);
  }
  return targets;
}

} // namespace

std::vector<Target> Targets::of(Drill drill, double difficulty,
                                std::span<const std::uint64_t> seeds) {
  std::map<double, Target> found;
  for (const std::uint64_t seed : seeds) {
    const Trial trial = Drills::makeTrial(difficulty, Drills::defaultMaterial(drill), seed, drill);
    Target& target = found[Drills::truth(trial)];
    target.trial = trial;
    ++target.weight;
  }
  std::vector<Target> targets;
  for (const auto& [truth, target] : found)
    targets.push_back(target);
  return targets;
}

std::vector<Target> Targets::spread(Drill drill, double difficulty, const BandWeights& weights) {
  const double d = std::clamp(difficulty, 0.0, 100.0) / 100;
  std::vector<Target> targets;
  switch (drill) {
  case Drill::frequency:
    for (std::size_t band = 0; band < weights.size(); ++band)
      if (weights[band] > 0)
        targets.push_back({.trial = {.drill = drill, .targetFreq = Bands::centres[band]},
                           .weight = weights[band]});
    break;
  case Drill::level: {
    const double hi = 6 - 5.6 * d;
    return steps(0.45 * hi, hi, 20, drill, &Trial::targetLevelDB);
  }
  case Drill::dynamics: {
    const double hi = 12 - 10 * d;
    return steps(0.4 * hi, hi, 10, drill, &Trial::targetGRdB);
  }
  case Drill::polarity:
    for (std::int64_t slot = 0; slot < 3; ++slot)
      targets.push_back({.trial = {.drill = drill, .slots = 3, .oddSlot = slot}, .weight = 1});
    break;
  }
  return targets;
}

} // namespace velto
