// Listeners whose threshold is known, and their answers to the trials of the program's staircase.
#pragma once

#include "Staircase.h"
#include "ThresholdFit.h"
#include "Trial.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velto::testing {

// Independent of the generator of trials: one stream per seed.
class ListenerRandom {
public:
  explicit ListenerRandom(std::uint64_t seed) : state_(Drills::mixedSeed(seed)) {}

  // In [0, 1).
  double unit() { return static_cast<double>(Drills::mixedSeed(state_++) >> 11) * 0x1p-53; }
  // With a standard deviation of 1, by Box and Muller.
  double normal() {
    const double radius = std::sqrt(-2 * std::log(1 - unit()));
    return radius * std::cos(2 * M_PI * unit());
  }

private:
  std::uint64_t state_;
};

struct SimulatedListener {
  // How hearing falls with difficulty. The steep sides of the skewed ones lie at the hard and at
  // the easy end.
  enum class Shape { logistic, normal, steepWhenHard, steepWhenEasy };
  // How the threshold changes by `change` points while the answers are given: evenly; fast at first
  // and slower later; at once, halfway; or by eight steps with this standard deviation.
  enum class Change { even, learning, sudden, wandering };

  std::string name;
  double threshold = 50; // heard half of the time
  double width = 40;     // points in which hearing falls from 95 to 5 %
  double lapseRate = 0.02;
  double guessFactor = 1; // of the best guess rate
  Shape shape = Shape::logistic;
  Change kind = Change::even;
  double change = 0;
  int earlierAnswers = 0; // that moved the staircase before

  // The share of trials heard if the threshold is `points` above the difficulty.
  [[nodiscard]] double heard(double points) const {
    const double x = points / width;
    // Of a Gumbel distribution: the median, and the distance from 5 to 95 %.
    const double median = std::log(std::log(2.0));
    const double range = std::log(-std::log(0.05)) - std::log(-std::log(0.95));
    switch (shape) {
    case Shape::logistic:
      return 1 / (1 + std::exp(-2 * std::log(19.0) * x));
    case Shape::normal:
      return 0.5 * std::erfc(-x * 2 * 1.6448536269514722 / std::sqrt(2.0));
    case Shape::steepWhenHard:
      return std::exp(-std::exp(median - range * x));
    case Shape::steepWhenEasy:
      return 1 - std::exp(-std::exp(median + range * x));
    }
    return 0;
  }
};

struct SimulatedAnswers {
  std::vector<HitOrMiss> answers;
  double meanThreshold = 0; // the true one, while they were given
  double lastThreshold = 0; // at the last of them
};

// `count` answers to trials placed by a staircase that starts as a new one.
[[nodiscard]] inline SimulatedAnswers practise(const SimulatedListener& listener, int count,
                                               double guessRate, std::uint64_t seed) {
  using Change = SimulatedListener::Change;
  ListenerRandom random(seed);
  std::vector<double> wandering(9);
  for (std::size_t i = 1; i < wandering.size(); ++i)
    wandering[i] = wandering[i - 1] + listener.change * random.normal() / std::sqrt(8.0);
  const auto changeAt = [&](double time) {
    switch (listener.kind) {
    case Change::even:
      return listener.change * (time - 0.5);
    case Change::learning:
      return listener.change * (1 - std::exp(-4 * time));
    case Change::sudden:
      return time < 0.5 ? -listener.change / 2 : listener.change / 2;
    case Change::wandering:
      return wandering[static_cast<std::size_t>(8 * time)];
    }
    return 0.0;
  };

  Staircase staircase;
  SimulatedAnswers result;
  const double guesses = listener.guessFactor * guessRate;
  for (int n = -listener.earlierAnswers; n < count; ++n) {
    const double time = n < 0 ? 0 : (n + 0.5) / count;
    const double threshold = listener.threshold + changeAt(time);
    const double hitRate = guesses + (1 - guesses - listener.lapseRate) *
                                         listener.heard(threshold - staircase.difficulty);
    const bool hit = random.unit() < hitRate;
    if (n >= 0) {
      result.answers.push_back({.difficulty = staircase.difficulty, .hit = hit});
      result.meanThreshold += threshold / count;
      result.lastThreshold = threshold;
    }
    staircase.record(hit);
  }
  return result;
}

} // namespace velto::testing
