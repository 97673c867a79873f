// Figures of repeated runs.
#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

namespace velto {

// Prints median, shortest and longest of `times` in milliseconds; at least one. Returns the median.
inline double reportMedian(const char* what, std::vector<double> times) {
  std::sort(times.begin(), times.end());
  const double median = times[times.size() / 2];
  std::printf("%s: median %.1f ms, shortest %.1f, longest %.1f (%zu runs)\n", what, median,
              times.front(), times.back(), times.size());
  return median;
}

} // namespace velto
