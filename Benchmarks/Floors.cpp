#include "Floors.h"

#include "DSP.h"
#include "Xorshift64.h"
#include "reference/ReferenceModel.h"

#include <algorithm>
#include <cmath>

namespace velto::benchmarks {

std::uint64_t xorshiftChain(std::uint64_t seed, std::size_t steps) {
  Xorshift64 generator(seed);
  std::uint64_t last = 0;
  for (std::size_t i = 0; i < steps; ++i)
    last = generator.next();
  return last;
}

double onePoleChain(std::span<const float> x) {
  double y = 0;
  for (const float sample : x)
    y = 0.99886 * y + static_cast<double>(sample);
  return y;
}

double biquadChain(std::span<const float> x) {
  double y1 = 0, y2 = 0;
  for (const float sample : x) {
    const double y = static_cast<double>(sample) - -1.2 * y1 - 0.4 * y2;
    y2 = y1;
    y1 = y;
  }
  return y1;
}

double sumChain(std::span<const float> x) {
  double sum = 0;
  for (const float sample : x)
    sum += static_cast<double>(sample);
  return sum;
}

std::size_t envelopeChain(std::span<const double> reductionsDB, double targetDB) {
  const double attack = std::exp(-1 / (0.005 * sampleRateHz));
  const double release = std::exp(-1 / (0.12 * sampleRateHz));
  double envelope = 0;
  std::size_t steps = 0;
  for (const double reduction : reductionsDB) {
    ++steps;
    if (reduction == 0) {
      envelope *= release;
      continue;
    }
    const double difference = envelope - reduction;
    envelope = reduction + std::max(attack * difference, release * difference);
    if (envelope >= targetDB)
      break;
  }
  return steps;
}

std::vector<double> reductionsOf(std::span<const float> x, double thresholdDB) {
  std::vector<double> reductions;
  for (const float sample : x) {
    const double amplitude = std::max(1e-9, std::abs(static_cast<double>(sample)));
    reductions.push_back(reference::gainReduction(20 * std::log10(amplitude), thresholdDB));
  }
  return reductions;
}

Search searchOf(std::span<const float> x, double targetDB) {
  double hi = Measure::peakDB(x), lo = hi - 40;
  Search search;
  for (int round = 0; round < 12; ++round) {
    search.thresholdDB = (hi + lo) / 2;
    const std::size_t steps = envelopeChain(reductionsOf(x, search.thresholdDB), targetDB);
    (steps == x.size() ? hi : lo) = search.thresholdDB;
    search.passes += static_cast<double>(steps) / static_cast<double>(x.size());
  }
  return search;
}

} // namespace velto::benchmarks
