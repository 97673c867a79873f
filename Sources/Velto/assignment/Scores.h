// Scores of a class.
#pragma once

#include "BlindAnswer.h"
#include "Drill.h"
#include "Results.h"
#include "Trial.h"
#include "TrialList.h"

#include <cstddef>
#include <vector>

namespace velto {

// One listener's score in one drill of a list.
struct Score {
  Drill drill = Drill::frequency;
  std::size_t trials = 0;  // of this drill in the list
  std::size_t answers = 0; // given so far; the figures below are 0 without one
  std::size_t hits = 0;
  double error = 0;      // mean: octaves, dB, dB, or 0 to 1
  double blindHits = 0;  // the share of hits that the best answers without listening expect
  double blindError = 0; // the mean error that the best answers without listening expect
  double byGuessing = 1; // probability of as many hits or more without listening
  double seconds = 0;    // mean
  double switches = 0;   // mean
  double difficulty = 0; // mean
};

// What the best answers without listening get in trials of the list, which ignore the sound but
// know how often the list asks for each band.
[[nodiscard]] BlindAnswers blindAnswersTo(const TrialList& list);

// One per drill of the list, in the order of the drills. Grades from the list.
[[nodiscard]] std::vector<Score> scoresOf(const Results::Reading& reading, BlindAnswers& blind);

// The scores of several listeners in one drill (1 or more) as if one had given all answers.
// `byGuessing` is 1.
[[nodiscard]] Score totalOf(const std::vector<Score>& scores);

// The probability of `hits` or more when trial i is hit with chances[i], independently.
[[nodiscard]] double probabilityOfAtLeast(std::size_t hits, const std::vector<double>& chances);

} // namespace velto
