#include "Compressor.h"

#include "Attenuation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace velto {

namespace {

constexpr double halfKneeDB = 3;
constexpr double detectorFloor = 1e-9; // amplitude

// Soft-knee static curve: the gain reduction in dB at a level `over` dB above the threshold.
double gainReduction(double over) {
  if (over >= halfKneeDB)
    return over - 0.25 * over;
  if (over > -halfKneeDB)
    return 0.75 * ((over + halfKneeDB) * (over + halfKneeDB)) / 12;
  return 0;
}

// Sample levels in dB, computed on first use and cached: the logarithm costs more than the rest of
// the work per sample.
class Levels {
public:
  explicit Levels(std::span<const float> x) : x_(x), levelsDB_(x.size(), unknown) {}

  double operator[](std::size_t i) {
    if (levelsDB_[i] == unknown)
      levelsDB_[i] = 20 * std::log10(std::max(detectorFloor, std::abs(static_cast<double>(x_[i]))));
    return levelsDB_[i];
  }

private:
  static constexpr double unknown = 0; // full scale has this level too and is never cached
  std::span<const float> x_;
  std::vector<double> levelsDB_;
};

// Samples below this amplitude are not reduced at `thresholdDB`. The margin to the knee is far
// larger than the rounding errors of log10 and pow. 0 if the knee is near the detector's floor.
float idleBelow(double thresholdDB) {
  const double knee = std::pow(10.0, (thresholdDB - halfKneeDB) / 20);
  return knee > 2 * detectorFloor ? static_cast<float>(knee * (1 - 1e-6)) : 0.0f;
}

// One-pole smoothing of the gain reduction: fast attack, slow release.
//
// The release coefficient is the larger one, so max() picks the attack product for a negative
// difference and the release product for a positive one: the same bits as with a branch. The
// envelope never becomes NaN: a finite threshold implies finite samples, and an infinite one
// reduces nothing.
class ReductionSmoother {
public:
  double next(double reduction) {
    const double difference = envelope_ - reduction;
    envelope_ = reduction + std::max(attack_ * difference, release_ * difference);
    return envelope_;
  }

  // Same as next(0).
  double nextIdle() { return envelope_ *= release_; }

private:
  double attack_ = std::exp(-1 / (0.005 * sampleRateHz));
  double release_ = std::exp(-1 / (0.12 * sampleRateHz));
  double envelope_ = 0;
};

// True if the largest smoothed reduction at `thresholdDB` stays below the target. Returns at the
// first sample that reaches it.
bool staysBelow(double targetGRdB, double thresholdDB, std::span<const float> x, Levels& levels) {
  ReductionSmoother smoother;
  const float idle = idleBelow(thresholdDB);
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::abs(x[i]) < idle)
      smoother.nextIdle();
    else if (!(smoother.next(gainReduction(levels[i] - thresholdDB)) < targetGRdB))
      return false;
  }
  return true;
}

// Twelve bisection steps. Returns the last threshold tried, not the middle of the remaining
// interval.
double thresholdHitting(double targetGRdB, std::span<const float> x, Levels& levels) {
  constexpr int rounds = 12;
  double hi = Measure::peakDB(x);
  double lo = hi - 40;
  double thresholdDB = 0;
  for (int round = 0; round < rounds; ++round) {
    thresholdDB = (hi + lo) / 2;
    (staysBelow(targetGRdB, thresholdDB, x, levels) ? hi : lo) = thresholdDB;
  }
  return thresholdDB;
}

} // namespace

double Drills::compressHitting(double targetGRdB, std::span<const float> x, std::span<float> out) {
  Levels levels(x);
  const double thresholdDB = thresholdHitting(targetGRdB, x, levels);
  const float idle = idleBelow(thresholdDB);
  ReductionSmoother smoother;
  double largest = 0;
  std::array<double, 512> envelope{};
  for (std::size_t begin = 0; begin < x.size(); begin += envelope.size()) {
    const std::size_t count = std::min(envelope.size(), x.size() - begin);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t frame = begin + i;
      envelope[i] = std::abs(x[frame]) < idle
                        ? smoother.nextIdle()
                        : smoother.next(gainReduction(levels[frame] - thresholdDB));
      largest = std::max(largest, envelope[i]);
    }
    attenuate(x.subspan(begin, count), std::span(envelope).first(count), out.subspan(begin, count));
  }
  return largest;
}

Drills::Compressed Drills::compressorHitting(double targetGRdB, std::span<const float> x) {
  Compressed result{Samples(x.size()), 0};
  result.grDB = compressHitting(targetGRdB, x, result.out);
  return result;
}

} // namespace velto
