#include "Drills.h"

#include "Numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velto {

namespace {

constexpr auto drillNames =
    std::to_array<std::string_view>({"frequency", "level", "dynamics", "polarity"});
static_assert(drillNames.size() == Drill::allCases.size());
constexpr auto defaultMaterials = std::to_array<Material>(
    {Material::pinkNoise, Material::pinkNoise, Material::drums, Material::pad});
static_assert(defaultMaterials.size() == Drill::allCases.size());
constexpr auto materialNames =
    std::to_array<std::string_view>({"Pink noise", "Drum loop", "Synth pad"});
static_assert(materialNames.size() == Material::allCases.size());
constexpr auto materialShortNames = std::to_array<std::string_view>({"Pink", "Drums", "Pad"});
static_assert(materialShortNames.size() == Material::allCases.size());

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

} // namespace

std::optional<Drill> Drill::fromRawValue(std::string_view rawValue) {
  return caseNamed<Drill>(rawValue, drillNames);
}

std::string_view Drill::rawValue() const {
  return drillNames[value_];
}

std::optional<Material> Material::fromRawValue(std::string_view rawValue) {
  return caseNamed<Material>(rawValue, materialNames);
}

std::string_view Material::rawValue() const {
  return materialNames[value_];
}

std::string_view Material::shortName() const {
  return materialShortNames[value_];
}

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

SharedSamples::SharedSamples(Samples samples) {
  auto owner = std::make_shared<const Samples>(std::move(samples));
  samples_ = *owner;
  owner_ = std::move(owner);
}

Material Drills::defaultMaterial(Drill drill) {
  return defaultMaterials[drill];
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

std::uint64_t Drills::mixedSeed(std::uint64_t counter) {
  std::uint64_t z = counter + 0x9E3779B97F4A7C15;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
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
