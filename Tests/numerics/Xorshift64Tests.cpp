#include "Xorshift64.h"

#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>

namespace velto {
namespace {

using namespace tests;

RC_GTEST_PROP(Xorshift64Law, MatchesTheModelBitForBit, ()) {
  const std::uint64_t seed = *anySeed();
  Xorshift64 bits(seed), noise(seed), pairs(seed);
  std::uint64_t state = reference::startState(seed);
  for (int i = 0; i < 20; ++i) {
    const Pair pair = pairs.nextNoisePair();
    for (const int half : {0, 1}) {
      state = reference::step(state);
      RC_ASSERT(bits.next() == state);
      require(sameBits(Xorshift64::unit(state), reference::unitValue(state)));
      require(sameBits(noise.nextNoise(), reference::noiseValue(state)));
      require(sameBits(pair[half], reference::noiseValue(state)));
    }
  }
}

} // namespace
} // namespace velto
