// The seeded random number generator of trials and of everything synthesised.
#pragma once

#include "Pair.h"

#include <cstdint>

namespace velto {

// George Marsaglia's xorshift64 with the shifts 13, 7, 17 ("Xorshift RNGs", Journal of Statistical
// Software 8, 2003). A state of zero would stay zero, so a seed of 0 is replaced.
class Xorshift64 {
public:
  static constexpr std::uint64_t zeroSeedReplacement = 0x9E3779B97F4A7C15;

  explicit constexpr Xorshift64(std::uint64_t seed)
      : state_(seed == 0 ? zeroSeedReplacement : seed) {}

  // Advances the state and returns it.
  constexpr std::uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_;
  }

  // The top 53 bits of `x` as a fraction in [0, 1).
  static constexpr double unit(std::uint64_t x) { return static_cast<double>(x >> 11) * 0x1p-53; }

  // The next value in [0, 1).
  constexpr double nextUnit() { return unit(next()); }

  // Mean of nextNoise().
  static constexpr double noiseMean = 1;

  // The next noise value, in [-1, 3), not in the usual [-1, 1). Every material's sound depends on
  // this range.
  constexpr double nextNoise() { return top53Bits() * 0x1p-51 - 1; }

  // The next two noise values.
  Pair nextNoisePair() {
    const double first = top53Bits();
    return Pair{first, top53Bits()} * 0x1p-51 - 1;
  }

private:
  // Converted from a signed integer, which takes a single instruction.
  constexpr double top53Bits() {
    return static_cast<double>(static_cast<std::int64_t>(next() >> 11));
  }

  std::uint64_t state_;
};

} // namespace velto
