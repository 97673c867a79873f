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

// Soft-knee static curve: the reduction, in dB, of a sample `over` dB above the threshold.
double gainReduction(double over) {
  if (over >= halfKneeDB)
    return over - 0.25 * over;
  if (over > -halfKneeDB)
    return 0.75 * ((over + halfKneeDB) * (over + halfKneeDB)) / 12;
  return 0;
}

// The levels of a buffer's samples in dB. A logarithm costs more than everything else that a sample
// passes through, so a level is computed when it is first asked for, and kept.
class Levels {
public:
  explicit Levels(std::span<const float> x) : x_(x), levelsDB_(x.size(), unknown) {}

  double operator[](std::size_t i) {
    if (levelsDB_[i] == unknown)
      levelsDB_[i] = 20 * std::log10(std::max(detectorFloor, std::abs(static_cast<double>(x_[i]))));
    return levelsDB_[i];
  }

private:
  static constexpr double unknown = 0; // also a level: full scale is computed each time
  std::span<const float> x_;
  std::vector<double> levelsDB_;
};

// An amplitude below which no sample is reduced at `thresholdDB`. It lies a little below the knee,
// by far more than what logarithm and power may be off; 0 where the detector's floor is above it.
float idleBelow(double thresholdDB) {
  const double knee = std::pow(10.0, (thresholdDB - halfKneeDB) / 20);
  return knee > 2 * detectorFloor ? static_cast<float>(knee * (1 - 1e-6)) : 0.0f;
}

// One-pole smoothing of the gain reduction: fast while it rises, slow while it falls.
//
// The slower coefficient is the larger one. So of the two products below the larger is the attack's
// while the difference is negative and the release's while it is positive: what a branch would
// choose, to the last bit, without one. The envelope never gets NaN: with a finite threshold all
// samples are finite, and an infinite one reduces nothing.
class ReductionSmoother {
public:
  double next(double reduction) {
    const double difference = envelope_ - reduction;
    envelope_ = reduction + std::max(attack_ * difference, release_ * difference);
    return envelope_;
  }

  // What next(0) does.
  double nextIdle() { return envelope_ *= release_; }

private:
  double attack_ = std::exp(-1 / (0.005 * sampleRateHz));
  double release_ = std::exp(-1 / (0.12 * sampleRateHz));
  double envelope_ = 0;
};

// Whether the largest smoothed reduction at `thresholdDB` stays below the target. It only grows
// from sample to sample, so the first that gets there decides.
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

// The threshold that the last of twelve halvings probes, not the middle of what remains after it.
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
