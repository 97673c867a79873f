// Measurements of the probe.

#include "Probe.h"

#include "DSP.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace velto {

double Probe::envelopeSpreadDB(std::span<const float> x, double windowMS) {
  constexpr double silenceDB = -60;
  const auto window = static_cast<std::size_t>(windowMS * 0.001 * sampleRateHz);
  std::vector<double> levels;
  for (std::size_t start = 0; start + window <= x.size(); start += window)
    if (const double level = Measure::rmsDB(x.subspan(start, window)); level > silenceDB)
      levels.push_back(level);
  if (levels.size() < 2)
    return 0;

  const auto count = static_cast<double>(levels.size());
  double total = 0;
  for (const double level : levels)
    total += level;
  const double mean = total / count;
  double squares = 0;
  for (const double level : levels)
    squares += (level - mean) * (level - mean);
  return std::sqrt(squares / count);
}

double Probe::correlation(std::span<const float> l, std::span<const float> r) {
  double products = 0, squaresL = 0, squaresR = 0;
  for (std::size_t i = 0; i < std::min(l.size(), r.size()); ++i) {
    const auto left = static_cast<double>(l[i]);
    const auto right = static_cast<double>(r[i]);
    products += left * right;
    squaresL += left * left;
    squaresR += right * right;
  }
  return products / std::max(std::sqrt(squaresL * squaresR), 1e-12);
}

} // namespace velto
