// The threshold of a listener, from answers whose difficulties a staircase has chosen.
//
// The model. A listener hears what is asked with the probability 1 / (1 + exp(s (x - m) / w)) at
// difficulty x, where m is the threshold (heard half of the time), w the width (the difficulty
// within which the probability falls from 95 to 5 %) and s = 2 ln 19. An answer hits with the
// probability g + (1 - g - l) * heard, where g is the known rate of hits without listening and l
// the rate of lapses (F. A. Wichmann, N. J. Hill, "The psychometric function: I", Perception &
// Psychophysics 63, 2001).
//
// The threshold wanders: it walks randomly from answer to answer, by none to four points each. A
// staircase follows a listener who improves or tires, so that hits are about as frequent at all
// difficulties; a fit of one curve takes that for a flat curve with many lapses and misses the
// threshold by tens of points.
//
// The estimate is Bayesian, as H. H. Schütt, S. Harmeling, J. H. Macke and F. A. Wichmann recommend
// ("Painfree and accurate Bayesian estimation of psychometric functions for (potentially)
// overdispersed data", Vision Research 122, 2016). What is known before the answers:
// - m: equally likely within 0 to 100, less so outside (a normal distribution's flanks of 20
//   points);
// - w: log-normal, a median of 45 points, and 20 to 100 in two of three cases;
// - l: beta with parameters 1 and 30, 3 % on average; more is confused with a high threshold;
// - the steps of the walk: fewer the larger they are.
// The walks are drawn from their distribution by forward filtering and backward sampling (C. K.
// Carter, R. Kohn, "On Gibbs sampling for state space models", Biometrika 81, 1994), with a fixed
// seed.
#pragma once

#include <optional>
#include <span>

namespace velto {

// One answer, in the order of answering.
struct HitOrMiss {
  double difficulty = 0; // clamped to 0 to 100, as a trial's targets are
  bool hit = false;
};

// A listener's threshold, averaged over the answers.
struct ThresholdFit {
  double threshold = 0; // median; may lie outside 0 to 100
  // The interval that holds it in 95 of 100 cases, within 0 to 100. An end outside is open
  // (nullopt): there are no trials that could bound it.
  std::optional<double> lower;
  std::optional<double> upper;
  double width = 0;     // points, the mean of its logarithm
  double lapseRate = 0; // mean, 0 to 1
  double guessRate = 0; // as given

  // The probability of a hit at a difficulty.
  [[nodiscard]] double hitRate(double difficulty) const;

  // Fits `answers`. `guessRate` is at least 0 and below 0.9. nullopt without answers. Takes some 10
  // ms for 400 answers. Any thread.
  [[nodiscard]] static std::optional<ThresholdFit> of(std::span<const HitOrMiss> answers,
                                                      double guessRate);
};

} // namespace velto
