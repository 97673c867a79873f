#include "Blind.h"

#include "Grading.h"
#include "Trial.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace velto {

namespace {

struct Case {
  Trial trial;
  double probability = 0;
};

// The targets that steps of 1 / `perUnit` leave of a uniform range: step k stands for the part of
// the range within half a step of it.
std::vector<Case> steps(double lo, double hi, double perUnit, Drill drill, double Trial::*target) {
  std::vector<Case> cases;
  const double first = lo * perUnit, last = hi * perUnit;
  for (double k = std::round(first); k <= std::round(last); ++k) {
    const double part = std::min(k + 0.5, last) - std::max(k - 0.5, first);
    if (part <= 0)
      continue;
    Case one{.trial = {.drill = drill}, .probability = part / (last - first)};
    one.trial.*target = k / perUnit;
    cases.push_back(one);
  }
  return cases;
}

std::vector<Case> casesOf(Drill drill, double difficulty, const Blind::Weights& weights) {
  const double d = std::clamp(difficulty, 0.0, 100.0) / 100;
  std::vector<Case> cases;
  switch (drill) {
  case Drill::frequency:
    for (std::size_t band = 0; band < weights.size(); ++band)
      cases.push_back({.trial = {.drill = drill, .targetFreq = Bands::centres[band]},
                       .probability = weights[band]});
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
      cases.push_back({.trial = {.drill = drill, .slots = 3, .oddSlot = slot}, .probability = 1});
    break;
  }
  return cases;
}

// The answers that the window can give.
std::vector<double> answersOf(Drill drill) {
  std::vector<double> answers;
  const auto add = [&answers](int count, double step) {
    for (int k = 0; k <= count; ++k)
      answers.push_back(k * step);
  };
  switch (drill) {
  case Drill::frequency:
    answers.assign(Bands::centres.begin(), Bands::centres.end());
    break;
  case Drill::level:
    add(140, 0.05);
    break;
  case Drill::dynamics:
    add(28, 0.5);
    break;
  case Drill::polarity:
    add(2, 1);
    break;
  }
  return answers;
}

} // namespace

Blind Blind::at(Drill drill, double difficulty, const Weights& weights) {
  const std::vector<Case> cases = casesOf(drill, difficulty, weights);
  double total = 0;
  for (const Case& one : cases)
    total += one.probability;

  Blind best{.hits = 0, .error = std::numeric_limits<double>::infinity()};
  for (const double answer : answersOf(drill)) {
    double hits = 0, error = 0;
    for (const Case& one : cases) {
      const Drills::Grade grade = Drills::grade(answer, one.trial);
      hits += grade.correct ? one.probability : 0;
      error += grade.error * one.probability;
    }
    best.hits = std::max(best.hits, hits / total);
    best.error = std::min(best.error, error / total);
  }
  return best;
}

} // namespace velto
