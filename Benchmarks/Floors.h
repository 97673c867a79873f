// What the arithmetic of a material or a filter costs at least: the chain of operations of which
// each waits for the one before it, and nothing else, over one trial's length of samples.
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
