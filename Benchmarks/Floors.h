// Lower bounds for the cost of a material, a filter or a trial: only the chains of dependent
// operations, over the samples of one trial.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velto::benchmarks {

// Steps of the generator.
std::uint64_t xorshiftChain(std::uint64_t seed, std::size_t steps);
// y = c * y + x
double onePoleChain(std::span<const float> x);
// y = x - a1 * y1 - a2 * y2
double biquadChain(std::span<const float> x);
// s = s + x
double sumChain(std::span<const float> x);

// The compressor's envelope, from the reductions of the static curve in dB, until it reaches
// `targetDB`. Returns the number of steps.
std::size_t envelopeChain(std::span<const double> reductionsDB, double targetDB);

// The reductions at `thresholdDB` of each sample, dB.
std::vector<double> reductionsOf(std::span<const float> x, double thresholdDB);

// The compressor's search, round by round as its definition has it.
struct Search {
  double passes = 1; // over the whole of `x`: the shares that the rounds walk, and the last pass
  double thresholdDB = 0;
};
Search searchOf(std::span<const float> x, double targetDB);

} // namespace velto::benchmarks
