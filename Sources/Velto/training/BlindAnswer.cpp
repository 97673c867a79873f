#include "BlindAnswer.h"

#include "Bands.h"
#include "Grading.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velto {

namespace {

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

BlindAnswer BlindAnswer::best(std::span<const Target> targets) {
  BlindAnswer best{.meanError = std::numeric_limits<double>::infinity(),
                   .targets = targets.size(),
                   .lowestTarget = Drills::truth(targets.front().trial),
                   .highestTarget = Drills::truth(targets.back().trial)};
  double all = 0;
  for (const Target& target : targets)
    all += target.weight;
  double mostHits = 0;
  double errorsOfBest = 0;
  const Drill drill = targets.front().trial.drill;
  for (const double answer : answersWithin(drill, best.lowestTarget, best.highestTarget)) {
    double hits = 0;
    double errors = 0;
    for (const Target& target : targets) {
      const Drills::Grade grade = Drills::grade(answer, target.trial);
      hits += grade.correct ? target.weight : 0;
      errors += grade.error * target.weight;
    }
    best.meanError = std::min(best.meanError, errors / all);
    if (hits > mostHits || (hits == mostHits && errors < errorsOfBest)) {
      mostHits = hits;
      errorsOfBest = errors;
      best.answer = answer;
    }
  }
  best.hitRate = mostHits / all;
  return best;
}

const BlindAnswer& BlindAnswers::at(Drill drill, double difficulty) {
  const auto [place, isNew] = known_.try_emplace({drill, difficulty});
  if (isNew)
    place->second = BlindAnswer::best(targetsAt_(drill, difficulty));
  return place->second;
}

} // namespace velto
