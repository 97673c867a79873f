#include "Scores.h"

#include "Targets.h"

#include <algorithm>

namespace velto {

namespace {

std::size_t trialsOf(const TrialList& list, Drill drill) {
  return static_cast<std::size_t>(
      std::count_if(list.trials.begin(), list.trials.end(),
                    [&](const ListedTrial& trial) { return trial.drill == drill; }));
}

// The figures that are means over the answers.
constexpr double Score::*means[] = {&Score::error,   &Score::blindHits, &Score::blindError,
                                    &Score::seconds, &Score::switches,  &Score::difficulty};

Score scoreOf(Drill drill, const Results::Reading& reading, BlindAnswers& answers) {
  Score score{.drill = drill, .trials = trialsOf(reading.sitting.list(), drill)};
  std::vector<double> chances;
  for (const Results::Row& row : reading.rows) {
    if (row.trial.drill != drill)
      continue;
    const double difficulty = row.trial.difficulty;
    const BlindAnswer& blind = answers.at(drill, difficulty);
    chances.push_back(blind.hitRate);
    ++score.answers;
    score.hits += row.grade.correct ? 1 : 0;
    score.error += row.grade.error;
    score.blindHits += blind.hitRate;
    score.blindError += blind.meanError;
    score.seconds += row.given.seconds;
    score.switches += static_cast<double>(row.given.switches);
    score.difficulty += difficulty;
  }
  if (score.answers == 0)
    return score;
  for (double Score::*sum : means)
    score.*sum /= static_cast<double>(score.answers);
  score.byGuessing = probabilityOfAtLeast(score.hits, chances);
  return score;
}

} // namespace

BlindAnswers blindAnswersTo(const TrialList& list) {
  const BandWeights weights = list.bandWeights.value_or(Targets::evenBands);
  return BlindAnswers([weights](Drill drill, double difficulty) {
    return Targets::spread(drill, difficulty, weights);
  });
}

std::vector<Score> scoresOf(const Results::Reading& reading, BlindAnswers& blind) {
  std::vector<Score> scores;
  for (const Drill drill : Drill::allCases)
    if (trialsOf(reading.sitting.list(), drill) > 0)
      scores.push_back(scoreOf(drill, reading, blind));
  return scores;
}

Score totalOf(const std::vector<Score>& scores) {
  Score total{.drill = scores.front().drill};
  for (const Score& score : scores) {
    total.trials += score.trials;
    total.answers += score.answers;
    total.hits += score.hits;
    for (double Score::*mean : means)
      total.*mean += score.*mean * static_cast<double>(score.answers);
  }
  if (total.answers > 0)
    for (double Score::*mean : means)
      total.*mean /= static_cast<double>(total.answers);
  return total;
}

double probabilityOfAtLeast(std::size_t hits, const std::vector<double>& chances) {
  std::vector<double> probabilities{1}; // of 0, 1, ... hits
  for (const double chance : chances) {
    probabilities.push_back(0);
    for (std::size_t i = probabilities.size(); i-- > 0;)
      probabilities[i] =
          probabilities[i] * (1 - chance) + (i > 0 ? probabilities[i - 1] * chance : 0);
  }
  double sum = 0;
  for (std::size_t i = probabilities.size(); i-- > hits;)
    sum += probabilities[i];
  return std::min(sum, 1.0);
}

} // namespace velto
