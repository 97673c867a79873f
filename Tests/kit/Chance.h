// Targets of fair trials, and the probability of correct answers without listening.
#pragma once

#include "Bands.h"
#include "Drill.h"
#include "Grading.h"
#include "Trial.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace velto::kit {

// An answer that the window can give, and its probability of being correct.
struct BlindAnswer {
  double answer = 0;
  double chance = 0;
};

// All answers that the window can give in a drill.
[[nodiscard]] inline std::vector<double> possibleAnswers(Drill drill) {
  std::vector<double> answers;
  const auto steps = [&](int count, double step) {
    for (int k = 0; k <= count; ++k)
      answers.push_back(k * step);
  };
  switch (drill) {
  case Drill::frequency:
    answers.assign(Bands::centres.begin(), Bands::centres.end());
    break;
  case Drill::level:
    steps(140, 0.05);
    break;
  case Drill::dynamics:
    steps(28, 0.5);
    break;
  case Drill::polarity:
    steps(2, 1);
    break;
  }
  return answers;
}

// The targets at a difficulty, all equally likely. A continuous range is split into many small
// parts.
[[nodiscard]] inline std::vector<Trial> equallyLikelyTrials(Drill drill, double difficulty) {
  const double d = difficulty / 100;
  std::vector<Trial> trials;
  const auto fractions = [&](double hi, double lo, double perUnit, double Trial::*field) {
    constexpr int count = 20000;
    for (int i = 0; i < count; ++i) {
      const double value = lo + (hi - lo) * (i + 0.5) / count;
      trials.push_back({.drill = drill});
      trials.back().*field = std::round(value * perUnit) / perUnit;
    }
  };
  switch (drill) {
  case Drill::frequency:
    for (const double centre : Bands::centres)
      trials.push_back({.drill = drill, .targetFreq = centre});
    break;
  case Drill::level:
    fractions(6 - 5.6 * d, 0.45 * (6 - 5.6 * d), 20, &Trial::targetLevelDB);
    break;
  case Drill::dynamics:
    fractions(12 - 10 * d, 0.4 * (12 - 10 * d), 10, &Trial::targetGRdB);
    break;
  case Drill::polarity:
    for (const std::int64_t slot : {0, 1, 2})
      trials.push_back({.drill = drill, .slots = 3, .oddSlot = slot});
    break;
  }
  return trials;
}

// Two fair trials: with the smallest and the largest target, or with the first and the last slot
// flipped.
[[nodiscard]] inline std::array<Trial, 2> extremeTrials(Drill drill, Material material,
                                                        double difficulty) {
  std::vector<Trial> trials;
  for (std::uint64_t i = 0; i < 4000; ++i)
    trials.push_back(Drills::makeTrial(difficulty, material, Drills::mixedSeed(i), drill));
  const auto target = [](const Trial& trial) {
    return trial.targetFreq + trial.targetLevelDB + trial.targetGRdB +
           static_cast<double>(trial.oddSlot);
  };
  const auto [lowest, highest] =
      std::minmax_element(trials.begin(), trials.end(),
                          [&](const Trial& a, const Trial& b) { return target(a) < target(b); });
  return {*lowest, *highest};
}

// The answer that is correct for most of the targets at a difficulty.
[[nodiscard]] inline BlindAnswer bestBlindAnswer(Drill drill, double difficulty) {
  const std::vector<Trial> trials = equallyLikelyTrials(drill, difficulty);
  BlindAnswer best;
  for (const double answer : possibleAnswers(drill)) {
    double hits = 0;
    for (const Trial& trial : trials)
      hits += Drills::grade(answer, trial).correct ? 1 : 0;
    if (hits / static_cast<double>(trials.size()) > best.chance)
      best = {answer, hits / static_cast<double>(trials.size())};
  }
  return best;
}

// The smallest number of hits in `trials` trials that a listener with this `chance` exceeds with a
// probability of at most 1 - `confidence`.
[[nodiscard]] inline int mostHitsByChance(double chance, int trials, double confidence = 0.99) {
  double probability = std::pow(1 - chance, trials), sum = probability;
  int hits = 0;
  while (sum < confidence) {
    probability *= (trials - hits) * chance / ((hits + 1) * (1 - chance));
    sum += probability;
    ++hits;
  }
  return hits;
}

} // namespace velto::kit
