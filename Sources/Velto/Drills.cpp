#include "Drills.h"

#include "Numbers.h"
#include "Signals.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velto {

namespace {

constexpr std::array<std::string_view, Drill::allCases.size()> drillNames{
    "frequency", "level", "dynamics", "polarity"};
constexpr std::array<std::string_view, Material::allCases.size()> materialNames{
    "Pink noise", "Drum loop", "Synth pad"};

template <typename Enumeration, std::size_t N>
std::optional<Enumeration> caseNamed(std::string_view name,
                                     const std::array<std::string_view, N>& names) {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end())
    return std::nullopt;
  return Enumeration::allCases[static_cast<std::size_t>(found - names.begin())];
}

// `value` to a multiple of 1 / `perUnit`, halves away from zero.
double roundedToSteps(double value, double perUnit) {
  return std::round(value * perUnit) / perUnit;
}

// A target that is uniform between `lowFraction` of `hi` and `hi`.
double targetBelow(double hi, double lowFraction, double u, double stepsPerUnit) {
  const double lo = lowFraction * hi;
  return roundedToSteps(lo + (hi - lo) * u, stepsPerUnit);
}

std::string decibelsOff(double error, int decimals) {
  return Numbers::fixed(error, decimals) + " dB off";
}

std::string slotText(std::int64_t index) {
  return "slot " + std::to_string(Numbers::saturatingIncrement(index));
}

std::shared_ptr<const Samples> shared(Samples samples) {
  return std::make_shared<const Samples>(std::move(samples));
}

Samples source(const Trial& trial, double seconds) {
  switch (trial.material) {
  case Material::pinkNoise:
    return Signals::pink(seconds, trial.seed);
  case Material::drums:
    return Signals::drums(seconds, trial.seed);
  case Material::pad:
    return Signals::pad(seconds, trial.seed);
  }
  fatalError("an unknown material");
}

std::vector<Slot> monoSlots(Samples a, Samples b) {
  const auto sharedA = shared(std::move(a));
  const auto sharedB = shared(std::move(b));
  return {{sharedA, sharedA}, {sharedB, sharedB}};
}

Samples boosted(Samples x, const Trial& trial) {
  const double levelDB = Measure::rmsDB(x);
  Biquad peak = Biquad::peaking(trial.targetFreq, trial.boostDB, trial.boostQ, sampleRateHz);
  for (float& sample : x)
    sample = peak.process(sample);
  return Measure::normalizeRMS(std::move(x), levelDB);
}

Samples louder(Samples x, double levelDB) {
  const auto gain = static_cast<float>(std::pow(10.0, levelDB / 20));
  for (float& sample : x)
    sample *= gain;
  return x;
}

Samples compressed(std::span<const float> x, double targetGRdB) {
  return Measure::normalizeRMS(Drills::compressorHitting(targetGRdB, x).out, Measure::rmsDB(x));
}

std::vector<Slot> polaritySlots(std::span<const float> mono, const Trial& trial) {
  auto [left, right] = Signals::stereoise(mono, trial.correlation, trial.seed);
  Samples flipped(right.size());
  std::transform(right.begin(), right.end(), flipped.begin(), [](float sample) { return -sample; });

  const auto sharedLeft = shared(std::move(left));
  const auto sharedRight = shared(std::move(right));
  const auto sharedFlipped = shared(std::move(flipped));
  std::vector<Slot> slots;
  for (std::int64_t s = 0; s < 3; ++s)
    slots.push_back({sharedLeft, s == trial.oddSlot ? sharedFlipped : sharedRight});
  return slots;
}

// Soft-knee static curve: the reduction, in dB, of a sample `over` dB above the threshold.
double gainReduction(double over) {
  if (over >= 3)
    return over - 0.25 * over;
  if (over > -3)
    return 0.75 * ((over + 3) * (over + 3)) / 12;
  return 0;
}

// One-pole smoothing of the gain reduction: fast while it rises, slow while it falls.
class ReductionSmoother {
public:
  double next(double reduction) {
    const double coefficient = envelope_ < reduction ? attack_ : release_;
    envelope_ = reduction + coefficient * (envelope_ - reduction);
    if (std::isnan(envelope_))
      envelope_ = 0;
    return envelope_;
  }

private:
  double attack_ = std::exp(-1 / (0.005 * sampleRateHz));
  double release_ = std::exp(-1 / (0.12 * sampleRateHz));
  double envelope_ = 0;
};

double largestReduction(std::span<const double> levelsDB, double thresholdDB) {
  ReductionSmoother smoother;
  double largest = 0;
  for (const double levelDB : levelsDB)
    largest = std::max(largest, smoother.next(gainReduction(levelDB - thresholdDB)));
  return largest;
}

} // namespace

std::optional<Drill> Drill::fromRawValue(std::string_view rawValue) {
  return caseNamed<Drill>(rawValue, drillNames);
}

std::string_view Drill::rawValue() const { return drillNames[value_]; }

std::optional<Material> Material::fromRawValue(std::string_view rawValue) {
  return caseNamed<Material>(rawValue, materialNames);
}

std::string_view Material::rawValue() const { return materialNames[value_]; }

std::string Bands::label(double frequency) {
  if (frequency >= 1000)
    return Numbers::general(frequency / 1000, 4) + "k";
  return Numbers::fixed(frequency, 0);
}

std::size_t Bands::nearestIndex(double frequency) {
  std::size_t nearest = 0;
  double smallest = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < centres.size(); ++i) {
    const double distance = std::abs(std::log2(frequency / centres[i]));
    if (distance < smallest) {
      smallest = distance;
      nearest = i;
    }
  }
  return nearest;
}

Trial Drills::makeTrial(double difficulty, Material material, std::uint64_t seed, Drill drill) {
  const std::uint64_t x = Xorshift64(seed).next();
  const double u = Xorshift64::unit(x);
  const double d = difficulty <= 0 ? 0 : std::min(difficulty, 100.0) / 100;

  Trial trial{.drill = drill, .seed = seed, .material = material, .difficulty = difficulty};
  switch (drill) {
  case Drill::frequency:
    trial.targetFreq = Bands::centres[x % Bands::centres.size()];
    trial.boostDB = 12 - 9 * d;
    trial.boostQ = 2 + 3 * d;
    break;
  case Drill::level:
    trial.targetLevelDB = targetBelow(6 - 5.6 * d, 0.45, u, 20);
    break;
  case Drill::dynamics:
    trial.targetGRdB = targetBelow(12 - 10 * d, 0.4, u, 10);
    break;
  case Drill::polarity:
    trial.slots = 3;
    trial.oddSlot = static_cast<std::int64_t>(x % 3);
    trial.correlation = 1 - 0.65 * d;
    break;
  }
  return trial;
}

Drills::Grade Drills::grade(double answer, const Trial& trial) {
  Grade grade;
  switch (trial.drill) {
  case Drill::frequency:
    grade.error = std::abs(std::log2(answer / trial.targetFreq));
    grade.correct = grade.error <= 1.0 / 3.0;
    grade.errorText = Numbers::fixed(grade.error, 2) + " oct off";
    grade.truthText = Bands::label(trial.targetFreq) + " Hz";
    grade.answerText = Bands::label(answer) + " Hz";
    break;
  case Drill::level:
    grade.error = std::abs(answer - trial.targetLevelDB);
    grade.correct = grade.error <= 0.75;
    grade.errorText = decibelsOff(grade.error, 2);
    grade.truthText = Numbers::fixed(trial.targetLevelDB, 2) + " dB";
    grade.answerText = Numbers::fixed(answer, 2) + " dB";
    break;
  case Drill::dynamics:
    grade.error = std::abs(answer - trial.targetGRdB);
    grade.correct = grade.error <= 2.0;
    grade.errorText = decibelsOff(grade.error, 1);
    grade.truthText = Numbers::fixed(trial.targetGRdB, 1) + " dB GR";
    grade.answerText = Numbers::fixed(answer, 1) + " dB GR";
    break;
  case Drill::polarity: {
    const std::int64_t pick = Numbers::truncated(answer);
    grade.correct = pick == trial.oddSlot;
    grade.error = grade.correct ? 0 : 1;
    grade.errorText = grade.correct ? "hit" : "miss";
    grade.truthText = slotText(trial.oddSlot);
    grade.answerText = slotText(pick);
    break;
  }
  }
  return grade;
}

std::vector<Slot> Drills::render(const Trial& trial, double seconds) {
  Samples src = source(trial, seconds);
  switch (trial.drill) {
  case Drill::frequency: {
    Samples b = boosted(src, trial);
    return monoSlots(std::move(src), std::move(b));
  }
  case Drill::level: {
    Samples b = louder(src, trial.targetLevelDB);
    return monoSlots(std::move(src), std::move(b));
  }
  case Drill::dynamics: {
    Samples b = compressed(src, trial.targetGRdB);
    return monoSlots(std::move(src), std::move(b));
  }
  case Drill::polarity:
    return polaritySlots(src, trial);
  }
  fatalError("an unknown drill");
}

Drills::Compressed Drills::compressorHitting(double targetGRdB, std::span<const float> x) {
  if (x.empty())
    return {};

  std::vector<double> levelsDB(x.size());
  std::transform(x.begin(), x.end(), levelsDB.begin(), [](float sample) {
    return 20 * std::log10(std::max(std::abs(static_cast<double>(sample)), 1e-9));
  });

  constexpr int rounds = 12;
  double hi = Measure::peakDB(x);
  double lo = hi - 40;
  double thresholdDB = 0;
  for (int round = 0; round < rounds; ++round) {
    thresholdDB = (hi + lo) / 2;
    if (largestReduction(levelsDB, thresholdDB) < targetGRdB)
      hi = thresholdDB;
    else
      lo = thresholdDB;
  }

  // The threshold of the last round, not the middle of the final bracket.
  Compressed result{Samples(x.size()), 0};
  ReductionSmoother smoother;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double envelope = smoother.next(gainReduction(levelsDB[i] - thresholdDB));
    result.grDB = std::max(result.grDB, envelope);
    result.out[i] =
        static_cast<float>(static_cast<double>(x[i]) * std::pow(10.0, -envelope / 20));
  }
  return result;
}

void Staircase::record(bool correct) {
  const double step = reversals <= 1 ? 12 : reversals <= 3 ? 8 : reversals <= 6 ? 5 : 3;

  std::int64_t direction = 0;
  if (correct) {
    consecutiveCorrect = Numbers::saturatingIncrement(consecutiveCorrect);
    if (consecutiveCorrect < 2)
      return;
    difficulty = std::min(difficulty + step, 100.0);
    direction = 1;
  } else {
    difficulty = std::max(difficulty - step, 0.0);
    direction = -1;
  }
  consecutiveCorrect = 0;
  if (lastDirection != 0 && lastDirection != direction)
    reversals = Numbers::saturatingIncrement(reversals);
  lastDirection = direction;
}

} // namespace velto
