#include "Xorshift64.h"

#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdint>

namespace velto {
namespace {

using namespace tests;

TEST(Xorshift64, UnitValuesAreTheTop53Bits) {
  EXPECT_EQ(Xorshift64::unit(0), 0);
  EXPECT_EQ(Xorshift64::unit(0x7ff), 0);
  EXPECT_EQ(Xorshift64::unit(0x800), 0x1p-53);
  EXPECT_EQ(Xorshift64::unit(0x8000000000000000), 0.5);
  EXPECT_EQ(Xorshift64::unit(~std::uint64_t{0}), 1 - 0x1p-53);
  EXPECT_EQ(Xorshift64(0x8000000000000000).nextUnit(), 0.50390625); // 0x81 / 0x100
}

TEST(Xorshift64, NoiseValuesReachFromMinusOneToThree) {
  EXPECT_EQ(Xorshift64(0x8000000000000000).nextNoise(), 1.015625); // 4 * 0x81 / 0x100 - 1
  Xorshift64 one(1);
  EXPECT_EQ(one.nextNoise(), -0.9999999997653202);
  EXPECT_EQ(one.nextNoise(), -0.7499844971607521);
  EXPECT_EQ(one.nextNoise(), 1.4237375701141861);
  EXPECT_EQ(one.nextNoise(), 2.8333103687814045);

  Xorshift64 generator(99);
  double sum = 0, low = 9, high = -9;
  for (int i = 0; i < 100000; ++i) {
    const double value = generator.nextNoise();
    sum += value;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  EXPECT_NEAR(sum / 100000, 1, 0.02); // five standard errors
  EXPECT_GE(low, -1);
  EXPECT_LT(low, -0.999);
  EXPECT_LT(high, 3);
  EXPECT_GT(high, 2.999);
}

RC_GTEST_PROP(Xorshift64Law, APairOfNoiseIsTwoDraws, ()) {
  const std::uint64_t seed = *anySeed();
  Xorshift64 one(seed), paired(seed);
  for (int i = 0; i < 20; ++i) {
    const double first = one.nextNoise();
    const Pair noise = paired.nextNoisePair();
    require(sameBits(noise[0], first));
    require(sameBits(noise[1], one.nextNoise()));
  }
}

} // namespace
} // namespace velto
