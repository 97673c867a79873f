#include "RecordAnalysis.h"

#include "Bands.h"
#include "BlindAnswer.h"
#include "Targets.h"
#include "TrialSeeds.h"

#include <algorithm>
#include <string>

namespace velto {

namespace {

std::vector<Attempt> rowsOf(Drill drill, std::span<const Attempt> attempts) {
  std::vector<Attempt> rows;
  for (const Attempt& attempt : attempts)
    if (attempt.drill == drill)
      rows.push_back(attempt);
  return rows;
}

// A count from a file that may hold any number, so that sums do not overflow.
std::int64_t credible(std::int64_t count) {
  return std::clamp<std::int64_t>(count, 0, 1'000'000'000'000);
}

std::int64_t hitsIn(std::span<const Attempt> rows) {
  return std::count_if(rows.begin(), rows.end(), [](const Attempt& row) { return row.correct; });
}

ErrorSize errorSizeOf(std::span<const Attempt> rows, double blindMean) {
  std::vector<double> errors;
  double sum = 0;
  for (const Attempt& row : rows) {
    errors.push_back(row.error);
    sum += row.error;
  }
  return {.mean = sum / static_cast<double>(rows.size()),
          .interval = Intervals::ofMean(errors),
          .blindMean = blindMean};
}

std::optional<ThresholdFit> thresholdOf(std::span<const Attempt> rows, double guessRate) {
  std::vector<HitOrMiss> answers;
  for (const Attempt& row : rows)
    answers.push_back({.difficulty = row.difficulty, .hit = row.correct});
  return ThresholdFit::of(answers, guessRate);
}

NewestAnswers newestAnswers(Drill drill, std::span<const Attempt> rows, SeedSource seeds) {
  const auto trialSeeds =
      seeds == SeedSource::spread ? TrialSeeds::spread() : TrialSeeds::clock(rows.front().date);
  BlindAnswers blind([&trialSeeds](Drill asked, double difficulty) {
    return Targets::of(asked, difficulty, trialSeeds);
  });
  const auto count = static_cast<double>(rows.size());
  double blindHits = 0;
  double blindError = 0;
  for (const Attempt& row : rows) {
    const BlindAnswer& answer = blind.at(drill, row.difficulty);
    blindHits += answer.hitRate;
    blindError += answer.meanError;
  }

  NewestAnswers newest;
  newest.answers = static_cast<std::int64_t>(rows.size());
  newest.hits = hitsIn(rows);
  newest.hitShare = Intervals::ofShare(newest.hits, newest.answers);
  newest.blindHitRate = blindHits / count;
  switch (drill) {
  case Drill::frequency:
  case Drill::polarity:
    newest.threshold = thresholdOf(rows, newest.blindHitRate);
    break;
  case Drill::level:
  case Drill::dynamics:
    newest.error = errorSizeOf(rows, blindError / count);
    break;
  }
  return newest;
}

} // namespace

DrillAnalysis DrillAnalysis::of(Drill drill, const Stored& record, SeedSource seeds,
                                std::size_t newest) {
  const std::vector<Attempt> rows = rowsOf(drill, record.attempts);
  DrillAnalysis analysis{.drill = drill,
                         .answers = static_cast<std::int64_t>(rows.size()),
                         .hits = hitsIn(rows),
                         .difficulty = Staircase().difficulty,
                         .newest = std::nullopt};
  if (drill == Drill::frequency) {
    for (const auto& [band, roll] : record.lifetime) {
      analysis.answers += credible(roll.attempts);
      analysis.hits += credible(roll.hits);
    }
  }
  const auto staircase = record.staircases.find(std::string(drill.rawValue()));
  if (staircase != record.staircases.end())
    analysis.difficulty = staircase->second.difficulty;
  if (!rows.empty())
    analysis.newest = newestAnswers(
        drill, std::span(rows).last(std::min(std::max<std::size_t>(newest, 1), rows.size())),
        seeds);
  return analysis;
}

std::vector<BandAnalysis> BandAnalysis::all(const Stored& record) {
  std::vector<BandAnalysis> bands(Bands::centres.size());
  for (std::size_t i = 0; i < bands.size(); ++i) {
    BandRoll roll;
    if (const auto earlier = record.lifetime.find(static_cast<std::int64_t>(i));
        earlier != record.lifetime.end())
      roll = earlier->second;
    std::vector<double> errors;
    for (const Attempt& attempt : record.attempts) {
      if (attempt.mappedBand() != static_cast<std::int64_t>(i))
        continue;
      roll.add(attempt);
      errors.push_back(attempt.error);
    }
    bands[i] = {.index = static_cast<std::int64_t>(i),
                .answers = roll.attempts,
                .hits = roll.hits,
                .hitShare = Intervals::ofShare(roll.hits, roll.attempts),
                .meanErrorOct =
                    roll.attempts == 0 ? 0 : roll.errorSum / static_cast<double>(roll.attempts),
                .meanError = Intervals::ofMean(errors)};
  }
  return bands;
}

} // namespace velto
