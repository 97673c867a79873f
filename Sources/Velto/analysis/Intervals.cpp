#include "Intervals.h"

#include "Xorshift64.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velto {

Interval Intervals::ofShare(std::int64_t hits, std::int64_t answers) {
  if (answers <= 0)
    return {.lower = 0, .upper = 1};
  constexpr double z = 1.959964; // standard deviations that hold 95 %
  const auto n = static_cast<double>(answers);
  const double share = std::clamp(static_cast<double>(hits) / n, 0.0, 1.0);
  const double middle = share + z * z / (2 * n);
  const double reach = z * std::sqrt(share * (1 - share) / n + z * z / (4 * n * n));
  const double scale = 1 + z * z / n;
  return {.lower = std::max(0.0, (middle - reach) / scale),
          .upper = std::min(1.0, (middle + reach) / scale)};
}

std::optional<Interval> Intervals::ofMean(std::span<const double> values) {
  if (values.size() < fewestForMean)
    return std::nullopt;
  // Sorted, because the interval must not depend on the order of the values.
  std::vector<double> sorted(values.begin(), values.end());
  std::sort(sorted.begin(), sorted.end());
  constexpr std::size_t samples = 4000;
  Xorshift64 random(0xB0075712A9ED5EED);
  std::vector<double> means(samples);
  for (double& mean : means) {
    double sum = 0;
    for (std::size_t i = 0; i < sorted.size(); ++i)
      sum += sorted[random.next() % sorted.size()];
    mean = sum / static_cast<double>(sorted.size());
  }
  std::sort(means.begin(), means.end());
  return Interval{.lower = means[samples / 40], .upper = means[samples - 1 - samples / 40]};
}

} // namespace velto
