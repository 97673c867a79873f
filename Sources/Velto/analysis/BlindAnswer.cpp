#include "BlindAnswer.h"

#include "Bands.h"
#include "Grading.h"
#include "Trial.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velto {

namespace {

// The different targets, ascending, each with one of its trials and the number of them.
struct Target {
  Trial trial;
  std::size_t trials = 0;
};
using Targets = std::map<double, Target>;

Targets targetsOf(Drill drill, double difficulty, std::span<const std::uint64_t> seeds) {
  Targets targets;
  for (const std::uint64_t seed : seeds) {
    const Trial trial = Drills::makeTrial(difficulty, Drills::defaultMaterial(drill), seed, drill);
    Target& target = targets[Drills::truth(trial)];
    target.trial = trial;
    ++target.trials;
  }
  return targets;
}

// The window's answers between two targets; none outside is better.
std::vector<double> answersWithin(Drill drill, double lowest, double highest) {
  std::vector<double> answers;
  const auto decibels = [&](double perDecibel) {
    for (double k = std::floor(lowest * perDecibel); k <= std::ceil(highest * perDecibel); ++k)
      answers.push_back(k / perDecibel);
  };
  switch (drill) {
  case Drill::frequency:
    answers.assign(Bands::centres.begin(), Bands::centres.end());
    break;
  case Drill::level:
    decibels(20);
    break;
  case Drill::dynamics:
    decibels(2);
    break;
  case Drill::polarity:
    answers = {0, 1, 2};
    break;
  }
  return answers;
}

} // namespace

BlindAnswer bestBlindAnswer(Drill drill, double difficulty, std::span<const std::uint64_t> seeds) {
  const Targets targets = targetsOf(drill, difficulty, seeds);
  BlindAnswer best{.meanError = std::numeric_limits<double>::infinity(),
                   .targets = targets.size(),
                   .lowestTarget = targets.begin()->first,
                   .highestTarget = targets.rbegin()->first};
  std::size_t mostHits = 0;
  double errorsOfBest = 0;
  for (const double answer : answersWithin(drill, best.lowestTarget, best.highestTarget)) {
    std::size_t hits = 0;
    double errors = 0;
    for (const auto& [value, target] : targets) {
      const Drills::Grade grade = Drills::grade(answer, target.trial);
      hits += grade.correct ? target.trials : 0;
      errors += grade.error * static_cast<double>(target.trials);
    }
    best.meanError = std::min(best.meanError, errors / static_cast<double>(seeds.size()));
    if (hits > mostHits || (hits == mostHits && errors < errorsOfBest)) {
      mostHits = hits;
      errorsOfBest = errors;
      best.answer = answer;
    }
  }
  best.hitRate = static_cast<double>(mostHits) / static_cast<double>(seeds.size());
  return best;
}

const BlindAnswer& BlindAnswers::at(Drill drill, double difficulty) {
  const auto [place, isNew] = known_.try_emplace({drill, difficulty});
  if (isNew)
    place->second = bestBlindAnswer(drill, difficulty, seeds_);
  return place->second;
}

} // namespace velto
