#include "Trial.h"

#include "Bands.h"
#include "Xorshift64.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

// Rounds `value` to a multiple of 1 / `perUnit`, halves away from zero.
double roundedToSteps(double value, double perUnit) {
  return std::round(value * perUnit) / perUnit;
}

// A target distributed uniformly between `lowFraction` * `hi` and `hi`.
double targetBelow(double hi, double lowFraction, double u, double stepsPerUnit) {
  const double lo = lowFraction * hi;
  return roundedToSteps(lo + (hi - lo) * u, stepsPerUnit);
}

} // namespace

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

} // namespace velto
