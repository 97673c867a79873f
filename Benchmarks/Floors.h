// Lower bounds for the cost of a material or a filter: only its chain of dependent operations, over
// the samples of one trial.
#pragma once

#include <cstdint>
#include <span>

namespace velto::benchmarks {

// Steps of the generator.
std::uint64_t xorshiftChain(std::uint64_t seed, std::size_t steps);
// y = c * y + x
double onePoleChain(std::span<const float> x);
// y = x - a1 * y1 - a2 * y2
double biquadChain(std::span<const float> x);
// s = s + x
double sumChain(std::span<const float> x);

} // namespace velto::benchmarks
