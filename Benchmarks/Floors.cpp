#include "Floors.h"

#include "Xorshift64.h"

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

} // namespace velto::benchmarks
