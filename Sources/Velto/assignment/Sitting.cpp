#include "Sitting.h"

#include "FatalError.h"

#include <cmath>
#include <utility>

namespace velto {

Sitting::Sitting(TrialList list) : list_(std::move(list)) {
  for (const ListedTrial& trial : list_.trials)
    staircases_.emplace(trial.drill, Staircase{.difficulty = trial.difficulty});
}

std::optional<Trial> Sitting::next() const {
  if (answered_ == list_.trials.size())
    return std::nullopt;
  const ListedTrial& listed = list_.trials[answered_];
  const double difficulty = list_.difficulty == TrialList::Difficulty::staircase
                                ? staircases_.at(listed.drill).difficulty
                                : listed.difficulty;
  return Drills::makeTrial(difficulty, listed.material, listed.seed, listed.drill);
}

bool Sitting::isPossible(double answer, const Trial& trial) {
  switch (trial.drill) {
  case Drill::frequency:
    return std::isfinite(answer) && answer > 0;
  case Drill::level:
  case Drill::dynamics:
    return std::isfinite(answer);
  case Drill::polarity:
    return answer >= 0 && answer < static_cast<double>(trial.slots) && answer == std::floor(answer);
  }
  fatalError("unknown drill");
}

Drills::Grade Sitting::take(double answer) {
  const auto trial = next();
  if (!trial || !isPossible(answer, *trial))
    fatalError("a sitting cannot take this answer");
  const Drills::Grade grade = Drills::grade(answer, *trial);
  staircases_.at(trial->drill).record(grade.correct);
  ++answered_;
  return grade;
}

std::optional<std::vector<Trial>> fixedTrials(const TrialList& list) {
  if (list.difficulty == TrialList::Difficulty::staircase)
    return std::nullopt;
  std::vector<Trial> trials;
  for (const ListedTrial& listed : list.trials)
    trials.push_back(
        Drills::makeTrial(listed.difficulty, listed.material, listed.seed, listed.drill));
  return trials;
}

} // namespace velto
