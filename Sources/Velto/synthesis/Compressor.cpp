#include "Compressor.h"

#include "ApproximateLevel.h"
#include "Attenuation.h"
#include "Quad.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

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

double detected(float sample) {
  return std::max(detectorFloor, std::abs(static_cast<double>(sample)));
}

double levelDB(float sample) {
  return 20 * std::log10(detected(sample));
}

// Samples below this amplitude are not reduced at `thresholdDB`. The margin to the knee is far
// larger than the rounding errors of log10 and pow. 0 if the knee is near the detector's floor.
float idleBelow(double thresholdDB) {
  const double knee = std::pow(10.0, (thresholdDB - halfKneeDB) / 20);
  return knee > 2 * detectorFloor ? static_cast<float>(knee * (1 - 1e-6)) : 0.0f;
}

double decay(double seconds) {
  return std::exp(-1 / (seconds * sampleRateHz));
}

// The factors by which idle samples reduce the envelope, by their number.
class Releases {
public:
  explicit Releases(double release) {
    factors_[0] = 1;
    for (std::size_t i = 1; i < factors_.size(); ++i)
      factors_[i] = factors_[i - 1] * release;
  }

  [[nodiscard]] double of(std::size_t count) const {
    double factor = 1;
    for (; count >= factors_.size(); count -= factors_.size() - 1)
      factor *= factors_.back();
    return factor * factors_[count];
  }

private:
  std::array<double, 1024> factors_{};
};

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

  // `count` times nextIdle(), with other rounding errors.
  void passIdle(std::size_t count) {
    static const Releases releases(decay(releaseSeconds));
    envelope_ *= releases.of(count);
  }

private:
  static constexpr double releaseSeconds = 0.12;

  double attack_ = decay(0.005);
  double release_ = decay(releaseSeconds);
  double envelope_ = 0;
};

// True if the largest smoothed reduction at `thresholdDB` stays below the target. Returns at the
// first sample that reaches it.
bool staysBelow(double targetGRdB, double thresholdDB, std::span<const float> x) {
  ReductionSmoother smoother;
  const float idle = idleBelow(thresholdDB);
  for (const float sample : x) {
    if (std::abs(sample) < idle)
      smoother.nextIdle();
    else if (!(smoother.next(gainReduction(levelDB(sample) - thresholdDB)) < targetGRdB))
      return false;
  }
  return true;
}

constexpr std::size_t searchFrames = 32;

// True if a sample of `block`, searchFrames long, reaches `amplitude` or is NaN.
bool anyReaches(float amplitude, std::span<const float> block) {
  auto below = SampleQuad{} == SampleQuad{};
  for (std::size_t i = 0; i < searchFrames; i += 4)
    below &= magnitudes(quadAt(block, i)) < amplitude;
  return (below[0] & below[1] & below[2] & below[3]) == 0;
}

// Same as staysBelow(), but passes over idle samples and approximates levels; nothing if the
// reduction comes so close to the target that an error may decide.
//
// The static curve has a slope of at most 3/4, and the envelope averages: it differs by less than a
// level does. Rounding adds about 1e-16 of the envelope per sample.
std::optional<bool> staysWellBelow(double targetGRdB, double thresholdDB,
                                   std::span<const float> x) {
  constexpr double marginDB = 1e-6;
  static_assert(marginDB > 10 * approximateLevelErrorDB);

  if (!std::isfinite(thresholdDB))
    return std::nullopt;
  ReductionSmoother smoother;
  const float idle = idleBelow(thresholdDB);
  std::size_t idleFrames = 0;
  double largest = 0;
  for (std::size_t begin = 0; begin < x.size(); begin += searchFrames) {
    const auto block = x.subspan(begin, std::min(searchFrames, x.size() - begin));
    if (block.size() == searchFrames && !anyReaches(idle, block)) {
      idleFrames += block.size();
      continue;
    }
    for (const float sample : block) {
      if (std::abs(sample) < idle) {
        ++idleFrames;
        continue;
      }
      smoother.passIdle(idleFrames);
      idleFrames = 0;
      const double over = approximateLevelDB(detected(sample)) - thresholdDB;
      largest = std::max(largest, smoother.next(gainReduction(over)));
    }
    if (largest > targetGRdB + marginDB)
      return false;
  }
  if (largest < targetGRdB - marginDB)
    return true;
  return std::nullopt;
}

// Twelve bisection steps. Returns the last threshold tried, not the middle of the remaining
// interval.
double thresholdHitting(double targetGRdB, std::span<const float> x) {
  constexpr int rounds = 12;
  double hi = Measure::peakDB(x);
  double lo = hi - 40;
  double thresholdDB = 0;
  for (int round = 0; round < rounds; ++round) {
    thresholdDB = (hi + lo) / 2;
    const std::optional<bool> wellBelow = staysWellBelow(targetGRdB, thresholdDB, x);
    const bool below = wellBelow ? *wellBelow : staysBelow(targetGRdB, thresholdDB, x);
    (below ? hi : lo) = thresholdDB;
  }
  return thresholdDB;
}

} // namespace

double Drills::compressHitting(double targetGRdB, std::span<const float> x, std::span<float> out) {
  const double thresholdDB = thresholdHitting(targetGRdB, x);
  const float idle = idleBelow(thresholdDB);
  ReductionSmoother smoother;
  double largest = 0;
  std::array<double, 512> envelope{};
  for (std::size_t begin = 0; begin < x.size(); begin += envelope.size()) {
    const std::size_t count = std::min(envelope.size(), x.size() - begin);
    for (std::size_t i = 0; i < count; ++i) {
      const float sample = x[begin + i];
      envelope[i] = std::abs(sample) < idle
                        ? smoother.nextIdle()
                        : smoother.next(gainReduction(levelDB(sample) - thresholdDB));
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
